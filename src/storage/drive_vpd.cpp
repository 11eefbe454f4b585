#include <algorithm>
#include <cstdio>
#include <cstring>

#include "db/code_text.h"
#include "db/system_log.h"
#include "zymdb_storage.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_AimDisk;

constexpr unsigned kShortestImage = 256;

// Step names of the decoder have outlived its structure; log readers look for them.
constexpr char kStandardDecoder[] = "parse_nvme_drive_standard_vpd";

struct VendorId {
  unsigned char low;
  unsigned char high;
  char maker[12];
};
constexpr VendorId kVendors[] = {
    {0x5F, 0x1C, "Memblaze"},
    {0x4D, 0x14, "Samsung"},
    {0x86, 0x80, "Intel"},
    {0x3B, 0x1E, "Dapu"},
};

// Reads within the input alone; what is beyond it reads as 0.
class Image {
 public:
  Image(const unsigned char* bytes, size_t size) : bytes_(bytes), size_(size) {}

  unsigned char operator[](size_t at) const { return at < size_ ? bytes_[at] : uint8_t{0}; }

  void copy(size_t from, size_t count, char* to) const {
    for (size_t i = 0; i < count; ++i) to[i] = static_cast<char>((*this)[from + i]);
  }

  uint64_t number(size_t at) const {
    uint64_t value = 0;
    for (size_t i = sizeof value; i-- > 0;) value = value << 8 | (*this)[at + i];
    return value;
  }

 private:
  const unsigned char* bytes_;
  size_t size_;
};

// A field of an area: where its bytes begin, and how many there are.
struct Field {
  uint8_t start;
  uint8_t length;
};

// Walks the fields of a product area. Positions are eight bits wide: an area may begin near the end of the
// first 256 bytes and go on at their beginning.
class FieldCursor {
 public:
  FieldCursor(const Image& image, unsigned position) : image_(image), at_(static_cast<uint8_t>(position)) {}

  Field next() {
    const uint8_t length = image_[at_] & 0x3F;
    const uint8_t start = static_cast<uint8_t>(at_ + 1);
    at_ = static_cast<uint8_t>(start + length);
    return {start, length};
  }

 private:
  const Image& image_;
  uint8_t at_;
};

// The NUL takes the place of the last byte that was copied.
template <size_t N>
void store_losing_last_byte(const Image& image, Field field, char (&text)[N]) {
  if (field.length == 0) return;
  const size_t count = std::min<size_t>(field.length, N);
  image.copy(field.start, count, text);
  text[count - 1] = '\0';
  rm_invalid_chars(text, static_cast<unsigned>(count));
}

// What follows the vendor word; the model itself when there is none.
const char* short_model(const char* model) {
  const char* const space = std::strchr(model, ' ');
  if (space != nullptr && space[1] != '\0') return space + 1;
  const char* const underscore = std::strrchr(model, '_');
  if (underscore != nullptr && underscore[1] != '\0') return underscore + 1;
  return model;
}

// As strncpy copies: up to the field's last byte, which stays the caller's.
template <size_t N>
void copy_before_last_byte(char (&field)[N], const char* text) {
  const size_t length = strnlen(text, N - 1);
  std::memcpy(field, text, length);
  std::memset(field + length, 0, N - 1 - length);
}

void decode_vendor_layout(const Image& image, Record& drive) {
  constexpr unsigned kSerialLength = 20;
  constexpr unsigned kModelLength = 40;
  image.copy(5, kSerialLength, drive.SerialNo);
  rm_invalid_chars(drive.SerialNo, kSerialLength);
  drive.SerialNo[kSerialLength] = '\0';
  image.copy(25, kModelLength, drive.Model);
  rm_invalid_chars(drive.Model, kModelLength);
  drive.Model[kModelLength] = '\0';
  copy_before_last_byte(drive.PartNo, short_model(drive.Model));
  std::memcpy(drive.FruNo, drive.SerialNo, sizeof drive.FruNo - 1);
  drive.FruNo[sizeof drive.FruNo - 1] = '\0';

  const auto* const vendor = std::ranges::find_if(
      kVendors, [&](const VendorId& id) { return id.low == image[3] && id.high == image[4]; });
  copy_text(drive.Manufacture, vendor != std::end(kVendors) ? vendor->maker : "Unknown");
}

void decode_model(const Image& image, Field field, Record& drive) {
  if (field.length == 0) return;
  image.copy(field.start, field.length, drive.Model);
  drive.Model[field.length] = '\0';
  rm_invalid_chars(drive.Model, field.length);
  copy_before_last_byte(drive.PartNo, short_model(drive.Model));
  drive.PartNo[sizeof drive.PartNo - 1] = '\0';
}

void decode_product_area(const Image& image, unsigned start, Record& drive) {
  FieldCursor fields(image, start + 3);
  store_losing_last_byte(image, fields.next(), drive.Manufacture);
  fields.next();  // product name
  decode_model(image, fields.next(), drive);
  fields.next();  // product version
  store_losing_last_byte(image, fields.next(), drive.SerialNo);
  fields.next();  // asset tag
  const Field file_id = fields.next();
  store_losing_last_byte(image, file_id, drive.FruNo);
  if (file_id.length == 0) copy_before_last_byte(drive.FruNo, drive.SerialNo);
}

// Only the area's start wraps: its records follow each other.
void decode_capacity(const Image& image, Record& drive) {
  constexpr int kMostRecords = 3;
  size_t record = static_cast<uint8_t>(image[5] * 8);
  for (int i = 0; i < kMostRecords; ++i) {
    if (image[record] == 0x0B) {  // NVMe
      const double bytes = static_cast<double>(image.number(record + 24));
      std::snprintf(drive.Capacity, sizeof drive.Capacity, "%.2lfTB", bytes / 1e12);
      record += 64;
    } else if (image[record] == 0x0C) {  // NVMe PCIe port
      record += 16;
    } else {
      return;
    }
  }
}

int decode_standard_layout(const Image& image, Record& drive) {
  const unsigned offset = image[4];
  if (offset == 0) {
    log_to_system(
        kLogInformation,
        "%s: NVMe drive %d. Invalid product info offset %d. [%02X %02X %02X %02X %02X %02X %02X %02X]\n\n",
        kStandardDecoder, drive.BayNo, static_cast<int>(offset), image[0], image[1], image[2], image[3],
        image[4], image[5], image[6], image[7]);
    return -1;
  }
  decode_product_area(image, offset * 8, drive);
  decode_capacity(image, drive);
  log_to_system(kLogInformation, "%s: NVMe drive %d. [Model] %s; [MFG] %s; [SN] %s; [Capacity] %s\n\n",
                kStandardDecoder, drive.BayNo, drive.Model, drive.Manufacture, drive.SerialNo,
                drive.Capacity);
  return 0;
}

bool is_control(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

}  // namespace

void rm_invalid_chars(char* buf, unsigned int len) {
  for (unsigned i = 0; i < len; ++i) {
    const bool ends_text = i + 1 == len || buf[i + 1] == ' ' || is_control(buf[i + 1]);
    if (is_control(buf[i]) || (buf[i] == ' ' && i != 0 && ends_text)) {
      buf[i] = '\0';
      return;
    }
  }
}

int parse_nvme_drive_vpd(const unsigned char* vpd, unsigned int len, _ZYMDB_AimDisk* out) {
  if (len < kShortestImage) return -1;
  const Image image(vpd, len);
  if (image[0] == 2 && image[1] == 8 && image[2] == 1) {
    decode_vendor_layout(image, *out);
    return 0;
  }
  if (image[0] == 1 || image[0] == 2) return decode_standard_layout(image, *out);
  log_to_system(kLogInformation, "%s: Unknown VPD format. data [%02X %02X %02X %02X]\n\n",
                "parse_nvme_drive_vpd", image[0], image[1], image[2], image[3]);
  return -1;
}
