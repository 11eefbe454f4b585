// Dumps of PCI configuration spaces in the form of `lspci -x`, `-xxx` and `-xxxx`.
#ifndef ZYMDB_COLLECT_SOURCES_PCI_LSPCI_DUMP_H
#define ZYMDB_COLLECT_SOURCES_PCI_LSPCI_DUMP_H

#include <string>
#include <string_view>
#include <vector>

#include "collect/sources/pci/pci_function.h"

namespace zymdb::collect {

// The functions of a dump, in its order. A function is a slot line ("[domain:]bus:device.function text"), hex
// lines of 16 bytes each from offset 0 on, 64, 128, 256 or 4096 bytes in all, and an empty line. Lines that
// start with a blank are details for people and skipped; lines may end in CR LF. Lines that tools wrote to
// standard error in between ("pcilib: ...", "lspci: ...") are skipped, with one notice for all of them.
//
// The last function may lack its empty line when it has as many bytes as the others, or as it can have.
//
// Throws SourceError with the line when the dump is anything else: a function that ends early (the file was
// cut short), one that is there twice, a dump without bytes, as lspci prints it for people, or without
// functions. `name` is the file's name in that message.
std::vector<PciFunction> parse_lspci_dump(std::string_view text, std::string_view name,
                                          std::vector<std::string>* notices = nullptr);

// The same of a file, which is read as it comes, however large it is.
std::vector<PciFunction> read_lspci_dump(const std::string& path, std::vector<std::string>& notices);

}  // namespace zymdb::collect

#endif
