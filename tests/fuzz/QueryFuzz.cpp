// Queries: every text is one, and none is too much for the index.

#include "../fakes/Folder.h"
#include "Input.h"
#include "accounts/Accounts.h"
#include "catalogue/CatalogueWriter.h"
#include "search/QueryStore.h"

namespace {

using namespace sonolet::service;

struct Music {
    Music() : accounts(folder.path("accounts.db")), writer(folder.path("catalogue.db")) {
        ScanBatch batch;
        for (const char* title :
             {"Blue Moon", "Year 1990", "AND OR NOT", "Caf\xc3\xa9 \"del\" Mar"}) {
            ScannedFile file;
            file.name = title;
            file.tags.emplace();
            file.tags->title = title;
            file.tags->artists = {"Ann Blue"};
            file.tags->album = "Moon Shot";
            file.tags->year = 1990;
            batch.files.push_back(file);
        }
        writer.apply(batch);
        store.emplace(folder.path("catalogue.db"), folder.path("accounts.db"));
    }

    const Folder folder;
    Accounts accounts;
    CatalogueWriter writer;
    std::optional<QueryStore> store;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Music music;
    Input input(data, size);
    SearchRequest request;
    request.suggest = input.byte() % 2 != 0;
    request.tracks = request.albums = request.artists = request.playlists = {
        static_cast<int>(input.byte() % 4), static_cast<int>(input.byte() % 8)};
    request.account = music.accounts.find("listener")->id;
    request.text = std::string(reinterpret_cast<const char*>(data) + std::min<std::size_t>(size, 3),
                               size - std::min<std::size_t>(size, 3));
    const SearchAnswer answer = music.store->index.search(request);
    require(answer.tracks.total >= 0 && answer.tracks.total <= 4 &&
                static_cast<int>(answer.tracks.ids.size()) <= answer.tracks.total,
            "more was found than there is");
    if (!answer.didYouMean.empty() && !request.suggest) {
        SearchRequest again = request;
        again.text = answer.didYouMean;
        const SearchAnswer meant = music.store->index.search(again);
        require(meant.tracks.total + meant.albums.total + meant.artists.total > 0,
                "what is proposed finds nothing");
    }
    return 0;
}
