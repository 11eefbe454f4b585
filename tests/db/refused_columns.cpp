// Tables of columns that must not compile, one for each number; 0 is what they are compared with.
#include <utility>

#include "db/query.h"
#include "db/values.h"

using namespace zymdb;

namespace {

struct Record {
  uint8_t byte;
  uint64_t wide;
  int8_t difference;
  char text[5];
};
struct Other {
  uint8_t byte;
};

constexpr auto kColumns =
    columns_of<Record>({ZYMDB_FIELD(Record, byte), ZYMDB_FIELD(Record, wide), ZYMDB_FIELD(Record, difference),
                        ZYMDB_FIELD(Record, text), ZYMDB_OWN_COLUMN("own")});

constexpr auto kWritten = written(in_order(kColumns, {"byte", "text"}), Puts::kWide);

template <size_t... I>
constexpr auto table_of(std::index_sequence<I...>) {
  return columns_of<Record>({(static_cast<void>(I), ColumnOf<Record>(ZYMDB_FIELD(Record, byte)))...});
}

#if REFUSED == 1  // a column of another record
constexpr auto kRefused = columns_of<Record>({ZYMDB_FIELD(Other, byte)});
#elif REFUSED == 2  // a name that the table lacks
constexpr auto kRefused = in_order(kColumns, {"bite"});
#elif REFUSED == 3
constexpr auto kRefused = written(in_order(kColumns, {"wide"}), Puts::kWide);
#elif REFUSED == 4
constexpr auto kRefused = written(in_order(kColumns, {"difference"}), Puts::kAsFields);
#elif REFUSED == 5
constexpr auto kRefused = written(in_order(kColumns, {"own"}), Puts::kWide);
#elif REFUSED == 6  // a field that the record lacks
constexpr auto kRefused = columns_of<Record>({ZYMDB_FIELD(Record, bite)});
#endif

}  // namespace

bool use(_zym_db_handle_t* handle, Other* other, Record* record) {
#if REFUSED == 7
  Query query(handle, "T", table_of(std::make_index_sequence<kMaxColumns + 1>()), nullptr);
#else
  Query query(handle, "T", table_of(std::make_index_sequence<kMaxColumns>()), nullptr);
#endif
  Values values(handle);
#if REFUSED == 8
  values.put_columns(kWritten, other);
#elif REFUSED == 11  // a table that goes away
  values.put_columns(written(in_order(kColumns, {"byte"}), Puts::kWide), record);
#else
  values.put_columns(kWritten, record);
#endif
#if REFUSED == 9
  return query.read_columns(kColumns, other);
#elif REFUSED == 10  // read where it was not made to be written
  values.put_columns(kColumns, record);
#endif
  static_cast<void>(other);
  return query.read_columns(kColumns, record);
}
