#include "accounts/ListSchema.h"

namespace sonolet::service {

// `removed` is the change by which an entry went away. Rank orders the entries of a list.
const char listSchema[] = R"(
CREATE TABLE lists(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    link BLOB NOT NULL UNIQUE,
    owner_id INTEGER NOT NULL REFERENCES accounts(id) ON DELETE CASCADE,
    kind INTEGER NOT NULL,
    name TEXT NOT NULL,
    description TEXT NOT NULL DEFAULT '',
    image BLOB,
    collaborative INTEGER NOT NULL DEFAULT 0,
    published INTEGER NOT NULL DEFAULT 1,
    source TEXT UNIQUE,
    source_digest BLOB);
CREATE INDEX lists_by_owner ON lists(owner_id);
CREATE UNIQUE INDEX lists_of_account ON lists(owner_id, kind) WHERE kind != 0;
CREATE TABLE list_entries(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    list_id INTEGER NOT NULL REFERENCES lists(id) ON DELETE CASCADE,
    rank INTEGER NOT NULL,
    removed INTEGER,
    kind INTEGER NOT NULL,
    item BLOB NOT NULL,
    creator TEXT NOT NULL,
    created INTEGER NOT NULL,
    seen INTEGER NOT NULL,
    text TEXT);
CREATE INDEX list_entries_in_order ON list_entries(list_id, rank) WHERE removed IS NULL;
CREATE INDEX list_entries_by_item ON list_entries(item, list_id) WHERE removed IS NULL;
CREATE INDEX list_entries_removed ON list_entries(removed) WHERE removed IS NOT NULL;
CREATE TABLE list_changes(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    list_id INTEGER NOT NULL,
    kind INTEGER NOT NULL,
    numbers TEXT NOT NULL);
CREATE TRIGGER lists_for_account AFTER INSERT ON accounts BEGIN
    INSERT INTO lists(link, owner_id, kind, name) VALUES
        (randomblob(16), NEW.id, 1, 'Starred'),
        (randomblob(16), NEW.id, 2, 'Inbox'),
        (randomblob(16), NEW.id, 3, '');
END;
INSERT INTO lists(link, owner_id, kind, name) SELECT randomblob(16), id, 1, 'Starred' FROM accounts;
INSERT INTO lists(link, owner_id, kind, name) SELECT randomblob(16), id, 2, 'Inbox' FROM accounts;
INSERT INTO lists(link, owner_id, kind, name) SELECT randomblob(16), id, 3, '' FROM accounts;
INSERT INTO list_entries(list_id, rank, kind, item, creator, created, seen)
    SELECT l.id, row_number() OVER (PARTITION BY l.id ORDER BY s.time, s.track) << 32, 0, s.track,
        a.name, s.time, 1
    FROM stars s JOIN accounts a ON a.id = s.account_id
    JOIN lists l ON l.owner_id = a.id AND l.kind = 1;
DROP TABLE stars;
CREATE VIEW stars AS SELECT l.owner_id AS account_id, e.item AS track, e.created AS time
    FROM lists l JOIN list_entries e ON e.list_id = l.id WHERE l.kind = 1 AND e.removed IS NULL;
)";

}  // namespace sonolet::service
