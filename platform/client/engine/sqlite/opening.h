// Opens a database file: creates it when missing, refuses what is not ours, brings its schema up to date.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_OPENING_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_OPENING_H

#include <functional>
#include <memory>
#include <string>

#include "client/dialect/catalog.h"
#include "client/engine/data_source.h"
#include "client/engine/sqlite/authorizer.h"
#include "client/engine/sqlite/database_files.h"
#include "client/engine/sqlite/engine.h"
#include "client/engine/sqlite/fingerprint.h"
#include "client/engine/sqlite/handles.h"

namespace zymdb::client::sqlite {

// How a connection has its database.
enum class Access {
  kShared,     // with the write-ahead log, among readers and writers
  kAlone,      // as the file stands and without files beside it, until a write-ahead log is there
  kImmutable,  // a file that nobody can be writing, read without files beside it
  kAbsent      // there is no file and none may be made: empty tables in memory
};

class Opening {
 public:
  Opening(const DataSource& source, const Limits& limits, Authorizer& authorizer,
          const std::function<void()>& connected, bool may_be_alone)
      : source_(source),
        limits_(limits),
        authorizer_(authorizer),
        connected_(connected),
        may_be_alone_(may_be_alone) {}

  // A success fills what follows; the reason of a failure is a whole line.
  Failure run();

  // With a write-ahead log that can be looked at.
  bool has_log() const;

  Access access = Access::kShared;
  DatabasePtr database;
  std::shared_ptr<const Catalog> catalog;
  FileNames names;
  Files files;

 private:
  Failure try_once();
  bool is_replaced() const;
  bool nobody_can_be_writing() const;
  void let_go();
  bool open_alone();

  Failure find_file();
  Failure find_none();
  Failure open();
  Failure connect();
  Failure hold_still();
  Failure configure();
  Failure bring_up_to_date();
  Failure limit_log();
  Failure read_catalog();
  Failure read_new_catalog(const Fingerprint& statements);
  Failure read_table_texts(Catalog& read, bool& is_understood);
  Failure ask_for_catalog(const Fingerprint& statements);
  Failure note_files();

  const DataSource& source_;
  const Limits& limits_;
  Authorizer& authorizer_;
  const std::function<void()>& connected_;
  const bool may_be_alone_;
  FileId connected_to_;
  int64_t size_ = 0;  // of that file, before it was open
};

}  // namespace zymdb::client::sqlite

#endif
