// The dump of a machine with as many functions as wanted: root ports, and a card of eight functions behind
// each.
#ifndef ZYMDB_TESTS_SUPPORT_LARGE_DUMP_H
#define ZYMDB_TESTS_SUPPORT_LARGE_DUMP_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

class LargeDump {
 public:
  // Configuration spaces of `size` bytes: 256, as `lspci -xxx` prints them, or 4096.
  LargeDump(std::ostream& out, size_t functions, size_t size) : out_(out), left_(functions), size_(size) {}

  void write() {
    for (unsigned domain = 0; left_ != 0; ++domain) {
      for (unsigned bus = 1; bus < 256 && left_ != 0; ++bus) write_card(domain, bus);
    }
  }

 private:
  struct Address {
    unsigned domain, bus, device, function;
  };

  void write_card(unsigned domain, unsigned bus) {
    write_function({domain, 0, bus >> 3, bus & 7}, root_port(bus));
    for (unsigned function = 0; function < 8; ++function)
      write_function({domain, bus, 0, function}, card_function());
  }

  // With a PCI Express capability of this type: x16 at the fourth generation.
  std::vector<uint8_t> config(uint16_t vendor, uint16_t device, uint8_t base_class, uint8_t type) const {
    std::vector<uint8_t> bytes(size_);
    bytes[0x00] = static_cast<uint8_t>(vendor);
    bytes[0x01] = static_cast<uint8_t>(vendor >> 8);
    bytes[0x02] = static_cast<uint8_t>(device);
    bytes[0x03] = static_cast<uint8_t>(device >> 8);
    bytes[0x06] = 0x10;
    bytes[0x0b] = base_class;
    bytes[0x34] = 0x40;
    bytes[0x40] = 0x10;
    bytes[0x42] = static_cast<uint8_t>(type << 4 | 2);
    bytes[0x4c] = bytes[0x52] = 0x04;
    bytes[0x4d] = bytes[0x53] = 0x01;
    return bytes;
  }
  std::vector<uint8_t> root_port(unsigned bus) const {
    auto bytes = config(0x8086, 0x347a, 0x06, 4);
    bytes[0x0a] = 0x04;
    bytes[0x0e] = 0x81;
    bytes[0x19] = bytes[0x1a] = static_cast<uint8_t>(bus);
    return bytes;
  }
  std::vector<uint8_t> card_function() const { return config(0x15b3, 0x101d, 0x02, 0); }

  void write_function(const Address& at, const std::vector<uint8_t>& bytes) {
    if (left_ == 0) return;
    --left_;
    char text[64];
    std::snprintf(text, sizeof text, "%04x:%02x:%02x.%x 0000: 0000:0000\n", at.domain, at.bus, at.device,
                  at.function);
    std::string lines = text;
    for (size_t i = 0; i < bytes.size(); ++i) {
      if (i % 16 == 0) {
        std::snprintf(text, sizeof text, "%02x:", static_cast<unsigned>(i));
        lines += text;
      }
      std::snprintf(text, sizeof text, i % 16 == 15 ? " %02x\n" : " %02x", bytes[i]);
      lines += text;
    }
    out_ << lines << '\n';
  }

  std::ostream& out_;
  size_t left_;
  size_t size_;
};

#endif
