// All connections of the process.
//
// SQLite shares the shared-memory file of a write-ahead log between all connections of a process to a file,
// and takes the one beside a file of the same name for its own: a connection to the file that took another's
// place would cut it short under those to the old one, whose next read is a bus error. Therefore databases
// are opened one at a time, and between finding its file and using it, an opening ends the connections to any
// other file that was there.
//
// A child process never uses a connection of its parent. The fork waits for running operations, so that the
// child finds SQLite's own state whole; what the child inherited is then dropped without touching the files.
// Merely forgetting it would not do: SQLite counts the locks of a process per file, and the child would take
// its parent's locks for its own.
//
// Locks are taken in this order: the opening, slots, the list of slots. Two slots are locked together by
// std::scoped_lock alone, which waits for neither while it holds the other.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_CONNECTIONS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_CONNECTIONS_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "client/engine/sqlite/connection.h"
#include "client/engine/sqlite/fingerprint.h"

namespace zymdb::client::sqlite {

// What a thread keeps a connection in.
struct Slot {
  std::mutex lock;
  std::unique_ptr<Connection> connection;
  // The connection's, for those who do not wait for the lock: its owner may be waiting for his turn to write,
  // and whoever writes may be opening another database.
  std::atomic<uint64_t> file{0};
  std::atomic<size_t> path{0};  // its hash

  // For the lock's owner.
  void set(std::unique_ptr<Connection> opened);
};

// Never destroyed: threads may outlive the statics of the process.
class Connections {
 public:
  static Connections& instance();

  // A new, empty one.
  std::shared_ptr<Slot> add_slot();

  // Whether no other slot has a connection to the same file.
  bool is_alone(const Slot& slot);

  // Ends the connections to the database at the path but those whose transaction can still be committed:
  // SQLite shares some of a file's state between all of them, so that none is any better than the oldest.
  void end(const std::string& path);

  // Ends the connections at the path to another file than lies there now. True: there were some. Waits for no
  // others.
  bool end_those_to_other_files(const std::string& path);

  // Lets the connections of the other slots keep no more results than their share. Waits for none of them.
  void share_out_room(const Slot& slot);

  // The catalog of databases whose tables were made by these statements, if one is in use: fifty KiB that the
  // threads of a process need once, and twice as much while it is read.
  std::shared_ptr<const Catalog> catalog_of(const Fingerprint& statements);
  std::shared_ptr<const Catalog> share(const Fingerprint& statements, Catalog catalog);

  void stand_still();
  void go_on();
  void abandon_inherited();

  std::mutex opening;

 private:
  using Slots = std::vector<std::shared_ptr<Slot>>;

  Slots slots();

  std::mutex mutex_;
  std::vector<std::weak_ptr<Slot>> slots_;
  Fingerprint statements_;  // those of the catalog that was read last
  std::weak_ptr<const Catalog> catalog_;
  Slots still_;  // locked, during a fork
};

}  // namespace zymdb::client::sqlite

#endif
