// Reads the same variable by a bare statement on the registry file and ends.
#include <sqlite3.h>

#include <cstdlib>

int main() {
  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
  sqlite3_open_v2(std::getenv("MOXEL_REGISTRY"), &database, SQLITE_OPEN_READWRITE, nullptr);
  sqlite3_prepare_v2(database,
                     "SELECT data FROM vals WHERE key = (SELECT id FROM keys WHERE path ="
                     " 'SOFTWARE\\MOXEL\\DOMAIN\\SALES\\VAR\\REGION') AND folded = 'VALUE'",
                     -1, &statement, nullptr);
  const bool found = sqlite3_step(statement) == SQLITE_ROW;
  sqlite3_finalize(statement);
  sqlite3_close(database);
  return found ? 0 : 1;
}
