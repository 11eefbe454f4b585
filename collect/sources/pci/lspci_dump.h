// Dumps of PCI configuration spaces in the form of `lspci -x`, `-xxx` and `-xxxx`.
#ifndef ZYMDB_COLLECT_SOURCES_PCI_LSPCI_DUMP_H
#define ZYMDB_COLLECT_SOURCES_PCI_LSPCI_DUMP_H

#include <string_view>
#include <vector>

#include "collect/sources/pci/pci_function.h"

namespace zymdb::collect {

// The functions of a dump, in its order. A function is a slot line ("[domain:]bus:device.function text"), hex
// lines of 16 bytes each from offset 0 on, 64, 128, 256 or 4096 bytes in all, and an empty line. Lines that
// start with a blank are details for people and skipped; lines may end in CR LF.
//
// Throws SourceError with the line when the dump is anything else: a function that ends early or without its
// empty line (the file was cut short), one that is there twice, a dump without bytes or without functions.
// `name` is the file's name in that message.
std::vector<PciFunction> parse_lspci_dump(std::string_view text, std::string_view name);

}  // namespace zymdb::collect

#endif
