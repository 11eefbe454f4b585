// Stands between the collector, the library and their database client, and lets one call fail.
#ifndef ZYMDB_TESTS_COLLECT_FAILING_CLIENT_H
#define ZYMDB_TESTS_COLLECT_FAILING_CLIENT_H

#include <cstddef>
#include <string>

namespace zymdb::collect {

// From here on calls count from 1, and the one with this number fails; 0: none does.
void fail_call(size_t number);

// The next transactions, as many as that, are overtaken by another writer at their `call`-th call: that and
// all that follow answer 40, the commit too.
void overtake(size_t transactions, size_t call);

// The calls since then, and the name of the last one that failed.
size_t calls_so_far();
std::string failed_call();

// The calls to one operation since then.
size_t calls_of(const std::string& name);

}  // namespace zymdb::collect

#endif
