#include "collect/model/segments.h"

#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr uint32_t kSegments = 128;  // a function key of a larger one would not fit 31 bits

PciAddress in_domain(PciAddress address, uint32_t domain) {
  address.domain = domain;
  return address;
}

}  // namespace

Segments number_domains(const std::vector<PciFunction>& functions, std::vector<std::string>& notices) {
  std::set<uint32_t> domains;
  for (const auto& function : functions) domains.insert(function.address.domain);
  std::set<uint32_t> taken = domains;
  Segments segments;
  for (const uint32_t domain : domains) {
    uint32_t segment = domain;
    if (domain >= kSegments) {
      for (segment = 0; taken.contains(segment);) ++segment;
      if (segment >= kSegments) {
        notices.push_back("PCI domain " + hex_text(domain) +
                          " is left out: no segment number is left for it");
        continue;
      }
      taken.insert(segment);
      notices.push_back("PCI domain " + hex_text(domain) + " is segment " + std::to_string(segment) +
                        " in the inventory");
    }
    segments.emplace(domain, static_cast<uint8_t>(segment));
  }
  return segments;
}

SegmentFinder::SegmentFinder(const std::vector<PciFunction>& functions) {
  for (const auto& function : functions) {
    domains_.insert(function.address.domain);
    const auto [owner, first] = owners_.emplace(in_domain(function.address, 0), function.address.domain);
    if (!first) owner->second.reset();
  }
}

void SegmentFinder::settle(std::optional<PciAddress>& stated) const {
  if (!stated || domains_.contains(stated->domain)) return;
  const auto owner = owners_.find(in_domain(*stated, 0));
  if (owner != owners_.end() && owner->second) stated = in_domain(*stated, *owner->second);
}

}  // namespace zymdb::collect
