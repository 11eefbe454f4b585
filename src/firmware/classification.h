// The classification texts of firmware components.
#ifndef ZYMDB_SRC_FIRMWARE_CLASSIFICATION_H
#define ZYMDB_SRC_FIRMWARE_CLASSIFICATION_H

#include <cstdint>

namespace zymdb {

constexpr uint16_t kClassificationUefi = 0x8006;

const char* classification_text(uint16_t code);

}  // namespace zymdb

#endif
