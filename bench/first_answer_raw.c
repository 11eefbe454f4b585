/* The same as first_answer with the database engine alone: the least that such a program needs. */
#include <sqlite3.h>
#include <stdlib.h>
#include <string.h>

#include "peak_memory.h"
#include "zymdb_pci.h"

static int read_packages(sqlite3* database) {
  sqlite3_stmt* statement = NULL;
  int count = 0;
  sqlite3_prepare_v2(database, "SELECT SlotNo,Location,PackageID1,PackageID2 FROM NCSIPackageID", -1,
                     &statement, NULL);
  while (sqlite3_step(statement) == SQLITE_ROW) count += sqlite3_column_int(statement, 0) >= 0;
  sqlite3_finalize(statement);
  return count;
}

static void read_adapter(sqlite3_stmt* row, _ZYMDB_PCI_Adapter* adapter) {
  memset(adapter, 0, sizeof *adapter);
  adapter->PCIKey = (uint32_t)sqlite3_column_int64(row, 0);
  adapter->NodeNo = (uint16_t)sqlite3_column_int(row, 1);
  adapter->SlotNo = (uint16_t)sqlite3_column_int(row, 2);
  adapter->HealthStatus = (uint8_t)sqlite3_column_int(row, 3);
  adapter->ConnectorType = (uint16_t)strtoul((const char*)sqlite3_column_text(row, 4), NULL, 0);
  strncpy(adapter->CardName, (const char*)sqlite3_column_text(row, 5), sizeof adapter->CardName - 1);
  adapter->AIMSupported = (uint8_t)sqlite3_column_int(row, 6);
  adapter->Location = (uint8_t)sqlite3_column_int(row, 7);
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const char* sql =
      "SELECT "
      "PCIKey,NodeNo,SlotNo,HealthStatus,ConnectorType,CardName,AIMSupported,Location,PCIFuncKey,count(*) "
      "FROM PCIAdapter WHERE 1 GROUP BY PCIKey";
  sqlite3* database = NULL;
  sqlite3_stmt* statement = NULL;
  if (sqlite3_open_v2(getenv("ZYMDB_INVENTORY"), &database, SQLITE_OPEN_READWRITE, NULL) != SQLITE_OK ||
      sqlite3_prepare_v2(database, sql, -1, &statement, NULL) != SQLITE_OK || read_packages(database) == 0)
    return 1;

  size_t count = 0;
  size_t room = 64;
  _ZYMDB_PCI_Adapter* adapters = malloc(room * sizeof *adapters);
  while (sqlite3_step(statement) == SQLITE_ROW) {
    if (count == room) adapters = realloc(adapters, (room *= 2) * sizeof *adapters);
    read_adapter(statement, &adapters[count++]);
  }
  print_peak_memory();
  free(adapters);
  sqlite3_finalize(statement);
  sqlite3_close(database);
  return count == strtoul(argv[1], NULL, 10) ? 0 : 1;
}
