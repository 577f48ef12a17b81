#include "platform/registry/schema.h"

namespace moxel::platform {

const char* const kCreateSchema = R"sql(
CREATE TABLE keys(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  parent INTEGER NOT NULL,
  path TEXT NOT NULL UNIQUE,
  name TEXT NOT NULL);
CREATE INDEX keys_by_parent ON keys(parent, path, name);

CREATE TABLE vals(
  key INTEGER NOT NULL,
  folded TEXT NOT NULL,
  ordinal INTEGER NOT NULL,
  name TEXT NOT NULL,
  type INTEGER NOT NULL,
  data BLOB NOT NULL,
  PRIMARY KEY(key, folded)) WITHOUT ROWID;
CREATE UNIQUE INDEX vals_by_ordinal ON vals(key, ordinal);

CREATE TABLE changes(
  list INTEGER NOT NULL,
  seq INTEGER NOT NULL,
  place NOT NULL,
  delta INTEGER NOT NULL,
  PRIMARY KEY(list, seq)) WITHOUT ROWID;

CREATE TRIGGER subkey_added AFTER INSERT ON keys BEGIN
  INSERT INTO changes VALUES(2 * new.parent,
    (SELECT coalesce(max(seq), 0) + 1 FROM changes WHERE list = 2 * new.parent), new.path, 1);
END;
CREATE TRIGGER subkey_removed AFTER DELETE ON keys BEGIN
  INSERT INTO changes VALUES(2 * old.parent,
    (SELECT coalesce(max(seq), 0) + 1 FROM changes WHERE list = 2 * old.parent), old.path, -1);
  DELETE FROM vals WHERE key = old.id;
  DELETE FROM changes WHERE list BETWEEN 2 * old.id AND 2 * old.id + 1;
END;
CREATE TRIGGER value_added AFTER INSERT ON vals BEGIN
  INSERT INTO changes VALUES(2 * new.key + 1,
    (SELECT coalesce(max(seq), 0) + 1 FROM changes WHERE list = 2 * new.key + 1), new.ordinal, 1);
END;
CREATE TRIGGER value_removed AFTER DELETE ON vals WHEN EXISTS (SELECT 1 FROM keys WHERE id = old.key) BEGIN
  INSERT INTO changes VALUES(2 * old.key + 1,
    (SELECT coalesce(max(seq), 0) + 1 FROM changes WHERE list = 2 * old.key + 1), old.ordinal, -1);
END;
CREATE TRIGGER change_added AFTER INSERT ON changes WHEN new.seq > 64 BEGIN
  DELETE FROM changes WHERE list = new.list AND seq = new.seq - 64;
END;

INSERT INTO keys VALUES(1, 0, '', 'HKEY_LOCAL_MACHINE');
)sql";

static_assert(kKeptChanges == 64, "the trigger change_added keeps as many");

const char* TextOf(Sql sql) {
  switch (sql) {
    case Sql::kFindKey: return "SELECT id FROM keys WHERE path = ?1";
    case Sql::kPathOfKey: return "SELECT path FROM keys WHERE id = ?1";
    case Sql::kAddKey:
      // A key that is rolled back gives its place in the sequence away, while handles on it may be open.
      return "INSERT INTO keys(id, parent, path, name) VALUES("
             "(SELECT seq + 1 + (random() & 0xFFFFFFF) FROM sqlite_sequence WHERE name = 'keys'), ?1, ?2, "
             "?3)";
    case Sql::kHasSubkeys: return "SELECT 1 FROM keys WHERE parent = ?1 LIMIT 1";
    case Sql::kDeleteKey: return "DELETE FROM keys WHERE id = ?1";
    case Sql::kFindValue: return "SELECT type, data FROM vals WHERE key = ?1 AND folded = ?2";
    case Sql::kAllValues:
      return "SELECT folded, type, CASE WHEN length(CAST(folded AS BLOB)) + length(data) <= ?3 THEN data END"
             " FROM vals WHERE key = ?1 LIMIT ?2";
    case Sql::kChangeValue: return "UPDATE vals SET type = ?3, data = ?4 WHERE key = ?1 AND folded = ?2";
    case Sql::kAddValue:
      return "INSERT INTO vals(key, folded, ordinal, name, type, data)"
             " SELECT id, ?2, (SELECT coalesce(max(ordinal), 0) + 1 FROM vals WHERE key = ?1), ?3, ?4, ?5"
             " FROM keys WHERE id = ?1";
    case Sql::kDeleteValue: return "DELETE FROM vals WHERE key = ?1 AND folded = ?2";
    case Sql::kListVersion: return "SELECT coalesce(max(seq), 0) FROM changes WHERE list = ?1";
    case Sql::kListChanges: return "SELECT place, delta FROM changes WHERE list = ?1 AND seq > ?2";
    case Sql::kNextSubkey:
      return "SELECT (SELECT max(seq) FROM changes WHERE list = 2 * ?1), path, name FROM keys"
             " WHERE parent = ?1 AND path > ?2 ORDER BY path LIMIT 1 OFFSET ?3";
    case Sql::kPreviousSubkey:
      return "SELECT (SELECT max(seq) FROM changes WHERE list = 2 * ?1), path, name FROM keys"
             " WHERE parent = ?1 AND path <= ?2 ORDER BY path DESC LIMIT 1 OFFSET ?3";
    case Sql::kNextValue:
      return "SELECT (SELECT max(seq) FROM changes WHERE list = 2 * ?1 + 1), ordinal, name, type, data FROM "
             "vals"
             " WHERE key = ?1 AND ordinal > ?2 ORDER BY ordinal LIMIT 1 OFFSET ?3";
    case Sql::kPreviousValue:
      return "SELECT (SELECT max(seq) FROM changes WHERE list = 2 * ?1 + 1), ordinal, name, type, data FROM "
             "vals"
             " WHERE key = ?1 AND ordinal <= ?2 ORDER BY ordinal DESC LIMIT 1 OFFSET ?3";
    case Sql::kFollowingSubkeys:
      return "SELECT NULL, path, name FROM keys WHERE parent = ?1 AND path > ?2 ORDER BY path LIMIT ?3";
    case Sql::kFollowingValues:
      return "SELECT NULL, ordinal, name, type, data FROM vals WHERE key = ?1 AND ordinal > ?2"
             " ORDER BY ordinal LIMIT ?3";
    case Sql::kBegin: return "BEGIN";
    case Sql::kBeginWriting: return "BEGIN IMMEDIATE";
    case Sql::kCommit: return "COMMIT";
    case Sql::kBeginNested: return "SAVEPOINT nested";
    case Sql::kCommitNested: return "RELEASE nested";
  }
  return nullptr;
}

}  // namespace moxel::platform
