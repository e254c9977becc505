#include "search/QueryStore.h"

#include "catalogue/Catalogue.h"
#include "search/Relevance.h"

namespace sonolet::service {

QueryStore::Attachment::Attachment(Database& database, const std::string& accountsFile) {
    migrateCatalogue(database);
    addRelevance(database);
    Statement(database, "ATTACH ?1 AS accounts").execute(accountsFile);
    // Who liked what, and how much.
    database.execute("CREATE TEMP VIEW favours(track, account_id, score) AS"
                     " SELECT track, account_id, count FROM accounts.plays"
                     " UNION ALL SELECT track, account_id, 5 FROM accounts.stars");
    database.execute("CREATE VIRTUAL TABLE temp.words USING fts5vocab(main, track_index, col)");
}

QueryStore::QueryStore(const std::string& catalogueFile, const std::string& accountsFile)
    : database(catalogueFile, Database::Durability::process), attachment(database, accountsFile),
      index(database), browser(database) {}

}  // namespace sonolet::service
