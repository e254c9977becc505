#include "search/Relevance.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace sonolet::service {

namespace {

// Robertson and Zaragoza, "The Probabilistic Relevance Framework: BM25 and Beyond", 2009.
constexpr double k1 = 1.2;
constexpr double b = 0.75;

// What is the same for all rows of a query.
struct Query {
    double averageSize = 0;         // words in a row
    std::vector<double> idf;        // by phrase
    std::vector<double> weights;    // by column
    std::vector<double> frequency;  // by phrase, of the row at hand
};

void check(int result) {
    if (result != SQLITE_OK) {
        throw result;
    }
}

std::unique_ptr<Query> prepare(const Fts5ExtensionApi& api,
                               Fts5Context* row,
                               int argumentCount,
                               sqlite3_value** arguments) {
    auto query = std::make_unique<Query>();
    const auto phrases = static_cast<std::size_t>(api.xPhraseCount(row));
    std::vector<sqlite3_int64> rowsWith(phrases);
    const std::size_t bytes = phrases * sizeof rowsWith[0];
    if (argumentCount != 1 + api.xColumnCount(row) ||
        static_cast<std::size_t>(sqlite3_value_bytes(arguments[0])) != bytes) {
        throw SQLITE_MISUSE;
    }
    std::memcpy(rowsWith.data(), sqlite3_value_blob(arguments[0]), bytes);
    sqlite3_int64 rows = 0;
    sqlite3_int64 words = 0;
    check(api.xRowCount(row, &rows));
    check(api.xColumnTotalSize(row, -1, &words));
    query->averageSize =
        static_cast<double>(words) / static_cast<double>(std::max(rows, sqlite3_int64{1}));
    for (const sqlite3_int64 with : rowsWith) {
        // What more than half of the rows have says next to nothing, but nothing against a row.
        const double idf =
            std::log((static_cast<double>(rows - with) + 0.5) / (static_cast<double>(with) + 0.5));
        query->idf.push_back(with == 0 ? 0 : std::max(idf, 1e-6));
    }
    for (int column = 1; column < argumentCount; ++column) {
        query->weights.push_back(sqlite3_value_double(arguments[column]));
    }
    query->frequency.resize(phrases);
    return query;
}

double weigh(const Fts5ExtensionApi& api, Fts5Context* row, Query& query) {
    std::fill(query.frequency.begin(), query.frequency.end(), 0.0);
    int instances = 0;
    check(api.xInstCount(row, &instances));
    for (int instance = 0; instance < instances; ++instance) {
        int phrase = 0;
        int column = 0;
        int place = 0;
        check(api.xInst(row, instance, &phrase, &column, &place));
        query.frequency[static_cast<std::size_t>(phrase)] +=
            query.weights[static_cast<std::size_t>(column)];
    }
    int words = 0;
    check(api.xColumnSize(row, -1, &words));
    const double length = k1 * (1 - b + b * words / query.averageSize);
    double score = 0;
    for (std::size_t phrase = 0; phrase < query.frequency.size(); ++phrase) {
        const double frequency = query.frequency[phrase];
        score -= query.idf[phrase] * frequency * (k1 + 1) / (frequency + length);
    }
    return score;
}

void relevance(const Fts5ExtensionApi* api,
               Fts5Context* row,
               sqlite3_context* context,
               int argumentCount,
               sqlite3_value** arguments) noexcept {
    try {
        auto* query = static_cast<Query*>(api->xGetAuxdata(row, 0));
        if (query == nullptr) {
            query = prepare(*api, row, argumentCount, arguments).release();
            check(api->xSetAuxdata(row, query, [](void* old) { delete static_cast<Query*>(old); }));
        }
        sqlite3_result_double(context, weigh(*api, row, *query));
    } catch (int result) {
        sqlite3_result_error_code(context, result);
    } catch (const std::exception&) {
        sqlite3_result_error_nomem(context);
    }
}

}  // namespace

void addRelevance(Database& database) {
    fts5_api* const api = database.fullTextSearch();
    if (api->xCreateFunction(api, "relevance", nullptr, &relevance, nullptr) != SQLITE_OK) {
        database.fail("relevance()");
    }
}

}  // namespace sonolet::service
