// An allocator of which the calling thread can have one call fail, by whomever it is made: linked into a test
// program, it takes the place of the C library's and of operator new.
#ifndef ZYMDB_TESTS_FAULTS_FAILING_ALLOCATOR_H
#define ZYMDB_TESTS_FAULTS_FAILING_ALLOCATOR_H

namespace failing_allocator {

// From here on the thread's allocations are counted; the one of this number, from 0 on, fails.
void fail(int number);

// Ends it; true when that allocation was reached.
bool stop();

// Allocations of the process that were not released yet.
long live();

}  // namespace failing_allocator

#endif
