// Forks: a child process has handles of its own right, and none of its parent's sessions.
#ifndef ZYMDB_PLATFORM_CLIENT_SESSION_FORKS_H
#define ZYMDB_PLATFORM_CLIENT_SESSION_FORKS_H

namespace zymdb::client {

// From here on a fork waits for running operations, so that the child finds everything whole.
void watch_forks();

// Before each use of a session: drops what this process inherited, if it was forked since the last call.
void drop_inherited();

}  // namespace zymdb::client

#endif
