#ifndef SONOLET_SERVICE_CATALOGUE_WORD_INDEX_H
#define SONOLET_SERVICE_CATALOGUE_WORD_INDEX_H

#include "store/Database.h"

#include <cstdint>

namespace sonolet::service {

// The words by which the rows of the catalogue are found. SQLite's index keeps none of the texts,
// so a row's words go by the texts that it has just then: they are removed before the row, or a row
// that it takes a name from, changes, and added again afterwards.
//
// Threads: as its database's; inside a transaction. Errors: DatabaseError.
class WordIndex final {
public:
    // Of one kind of rows. A row that shows nothing, being away, has no words.
    class Words final {
    public:
        Words(Database& database, const char* addSql, const char* removeSql)
            : insert(database, addSql), withdraw(database, removeSql) {}

        void add(std::int64_t row) { insert.execute(row); }
        void remove(std::int64_t row) { withdraw.execute(row); }

    private:
        Statement insert;
        Statement withdraw;
    };

    // The tables are there; `database` outlives this.
    explicit WordIndex(Database& database);

    Words tracks;
    Words albums;
    Words artists;
};

}  // namespace sonolet::service

#endif
