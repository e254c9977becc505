#ifndef SONOLET_SERVICE_SEARCH_QUERY_STORE_H
#define SONOLET_SERVICE_SEARCH_QUERY_STORE_H

#include "search/Browser.h"
#include "search/SearchIndex.h"
#include "store/Database.h"

#include <string>

namespace sonolet::service {

// What queries read: a connection of their own to the catalogue, with the accounts beside it.
//
// It reads alone: what a query finds changes nothing, and a scan that writes meanwhile does not
// wait.
//
// Threads: belongs to one thread at a time. Errors: DatabaseError. Both files must have been opened
// as Catalogue and Accounts before.
class QueryStore final {
public:
    QueryStore(const std::string& catalogueFile, const std::string& accountsFile);

private:
    Database database;
    // What the statements below need.
    struct Attachment {
        Attachment(Database& database, const std::string& accountsFile);
    } attachment;

public:
    SearchIndex index;
    Browser browser;
};

}  // namespace sonolet::service

#endif
