// What the counters of network ports said, from one collection to the next. Counters that move are no reason
// to write the inventory: this is a file of its own, in memory.
#ifndef ZYMDB_COLLECT_WRITE_PORT_SAMPLES_H
#define ZYMDB_COLLECT_WRITE_PORT_SAMPLES_H

#include <string>

#include "collect/rows/port_view.h"

namespace zymdb::collect {

// The file for the inventory that ZYMDB_INVENTORY names, in the folder that ZYMDB_COUNTERS names, else
// /run/zymdb.
std::string sample_file();

// Of a file that is not there or is something else: what can be read of it, perhaps nothing.
CounterSamples read_samples(const std::string& file);

// Takes the file's place. Where that cannot be, none is kept: the former ones would be too old.
void save_samples(const std::string& file, const CounterSamples& samples);

}  // namespace zymdb::collect

#endif
