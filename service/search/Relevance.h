#ifndef SONOLET_SERVICE_SEARCH_RELEVANCE_H
#define SONOLET_SERVICE_SEARCH_RELEVANCE_H

#include "store/Database.h"

namespace sonolet::service {

// Gives a connection the SQL function relevance(index, rows, weight, ...) for full-text queries:
// Okapi BM25 (k1 = 1.2, b = 0.75), negative, so that the best come first. `rows` is a blob of
// 64-bit integers that says of each phrase of the query how many rows have it; a phrase that 0
// rows have counts for nothing. The weights are those of the columns.
//
// SQLite's own bm25() walks through every row of every phrase first, once for each query, to learn
// those numbers; who has asked before knows them.
void addRelevance(Database& database);

}  // namespace sonolet::service

#endif
