// Vital product data as drives hand it out.
#ifndef ZYMDB_TESTS_SUPPORT_DRIVE_IMAGE_H
#define ZYMDB_TESTS_SUPPORT_DRIVE_IMAGE_H

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace drive_image {

using Image = std::vector<unsigned char>;

// The fields of a product area, in its order.
struct Product {
  std::string manufacturer = "Maker.";
  std::string name = "Product";
  std::string model = "Vendor ABC_123";
  std::string version = "1";
  std::string serial = "SN0001.";
  std::string asset_tag = "tag";
  std::string file_id = "FRU77.";
};

inline constexpr unsigned char kTextType = 0xC0;

// An FRU image with its product area at 8 and its multi-record area at 256 - 64.
inline Image standard_image(const Product& product, unsigned char area = 1, size_t size = 256) {
  Image image(size, 0);
  image[0] = 1;
  image[4] = area;
  image[5] = 24;
  size_t at = (area * 8 + 3) % 256;
  for (const std::string& text : {product.manufacturer, product.name, product.model, product.version,
                                  product.serial, product.asset_tag, product.file_id}) {
    image[at++ % 256] = static_cast<unsigned char>(kTextType | text.size());
    for (const char c : text) image[at++ % 256] = static_cast<unsigned char>(c);
  }
  return image;
}

inline void put_text(Image& image, size_t at, const std::string& text) {
  std::memcpy(&image[at], text.data(), text.size());
}

inline void put_nvme_record(Image& image, size_t at, uint64_t capacity) {
  image[at] = 0x0B;
  for (size_t i = 0; i < 8; ++i) image[at + 24 + i] = static_cast<unsigned char>(capacity >> 8 * i);
}

inline Image vendor_image(const std::string& serial, const std::string& model) {
  Image image(256, 0);
  image[0] = 2;
  image[1] = 8;
  image[2] = 1;
  put_text(image, 5, serial);
  put_text(image, 25, model);
  return image;
}

}  // namespace drive_image

#endif
