// Bodies for clients that take gzip.
#include "service/http/compression.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

namespace zymdb::service {
namespace {

std::string read_back(const std::string& compressed, size_t size) {
  std::string text(size + 1, '\0');
  z_stream stream{};
  EXPECT_EQ(inflateInit2(&stream, 15 + 16), Z_OK);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
  stream.avail_in = static_cast<uInt>(compressed.size());
  stream.next_out = reinterpret_cast<Bytef*>(text.data());
  stream.avail_out = static_cast<uInt>(text.size());
  EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
  text.resize(stream.total_out);
  inflateEnd(&stream);
  return text;
}

Text text_of(size_t size, char c = 'a') {
  return std::make_shared<const std::string>(size, c);
}

std::string noise(size_t size) {
  std::mt19937 random(1);
  std::string text;
  while (text.size() < size) text += static_cast<char>(random());
  return text;
}

TEST(Compression, IsReadBackByOthers) {
  const std::string text(100000, 'x');
  EXPECT_EQ(read_back(gzip(text), text.size()), text);
  EXPECT_LT(gzip(text).size(), text.size() / 100);
}

TEST(Compression, GivesBackWhatWasCompressedAndNothingElse) {
  for (const std::string& text : {std::string(), std::string("short"), noise(100000)})
    EXPECT_EQ(gunzip(gzip(text)), text);
  EXPECT_THROW(gunzip("no gzip"), std::bad_alloc);
  EXPECT_THROW(gunzip(gzip(noise(100000)).substr(0, 5000)), std::bad_alloc);
}

TEST(Compression, IsWhatTheClientAsksFor) {
  for (const char* header :
       {"gzip", "deflate, GZIP", "gzip;q=0.5", "*", "br;q=1.0, gzip;q=0.8, *;q=0.1", "x-gzip"})
    EXPECT_TRUE(accepts_gzip(header)) << header;
  for (const char* header : {"", "identity", "gzip;q=0", "gzip; q=0.000", "gzipped", "*;q=0", "gzip;q=0, *"})
    EXPECT_FALSE(accepts_gzip(header)) << header;
}

TEST(Compression, IsForTextsAlone) {
  for (const char* type :
       {"application/json", "text/html; charset=utf-8", "application/xml", "image/svg+xml"})
    EXPECT_TRUE(is_compressible(type)) << type;
  for (const char* type : {"image/png", "application/octet-stream", ""})
    EXPECT_FALSE(is_compressible(type)) << type;
}

TEST(CompressedTexts, AreMadeOnce) {
  CompressedTexts texts;
  const Text text = text_of(10000);
  const Text first = texts.of(text);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(texts.of(text), first);
}

TEST(CompressedTexts, AreNotThoseOfAnotherTextAtTheSamePlace) {
  CompressedTexts texts;
  for (const char c : {'a', 'b', 'c', 'd'}) {
    const Text text = text_of(10000, c);
    EXPECT_EQ(read_back(*texts.of(text), text->size()), *text);
  }
}

TEST(CompressedTexts, AreNoneWhereNothingIsGained) {
  CompressedTexts texts;
  EXPECT_EQ(texts.of(text_of(100)), nullptr);
  EXPECT_EQ(texts.of(std::make_shared<const std::string>(noise(10000))), nullptr);
}

TEST(CompressedTexts, StayWithinTheirBound) {
  CompressedTexts texts(2000);
  std::vector<Text> kept;
  for (int i = 0; i < 1000; ++i) {
    kept.push_back(text_of(100000, static_cast<char>('a' + i % 26)));
    ASSERT_NE(texts.of(kept.back()), nullptr);
    ASSERT_LE(texts.bytes(), 2000U);
  }
  EXPECT_GT(texts.bytes(), 0U);
}

}  // namespace
}  // namespace zymdb::service
