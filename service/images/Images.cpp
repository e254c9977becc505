#include "images/Images.h"

#include "store/Id.h"

#include <utility>

namespace sonolet::service {

Images::Images(std::unique_ptr<ImageLoader> imageLoader,
               std::shared_ptr<Library> sessionLibrary,
               Worker& sessionWorker,
               Post answerLater,
               ImageLoader::Log logLine)
    : loader(std::move(imageLoader)), library(std::move(sessionLibrary)), worker(sessionWorker),
      answer(std::move(answerLater)), log(std::move(logLine)) {}

Ref<sp_image> Images::image(const std::string& id) {
    if (closed) {
        return {};
    }
    bool created = false;
    Ref<sp_image> image = shelf.get(id, [&] {
        created = true;
        return new sp_image(shared_from_this(), id);
    });
    if (created) {
        request(id);
    }
    return image;
}

void Images::setCacheSize(std::uint64_t megabytes) {
    worker.post([this, megabytes] { loader->setCacheSize(megabytes); });
}

void Images::setCatalogue(const std::string& catalogueFile) {
    worker.post([this, catalogueFile] { loader->setCatalogue(catalogueFile); });
}

void Images::catalogueChanged() {
    for (const std::string& id : std::exchange(missing, {})) {
        request(id);
    }
}

void Images::close() {
    closed = true;
    missing.clear();
}

void Images::request(const std::string& id) {
    if (closed) {
        return;
    }
    // A scan may end while the worker looks; what it added last is seen by a look after its end.
    const bool mayAppear = library->isSettling();
    worker.post([this, id, mayAppear] {
        if (!shelf.find(id)) {
            return;  // nobody holds it any more
        }
        auto outcome = std::make_shared<const Outcome>(load(id));
        answer([this, id, outcome, mayAppear] { finish(id, *outcome, mayAppear); });
    });
}

Images::Outcome Images::load(const std::string& id) {
    Outcome outcome;
    try {
        if (std::optional<std::string> jpeg = loader->load(id)) {
            outcome.jpeg = std::move(*jpeg);
            return outcome;
        }
        outcome.found = false;
        outcome.error = SP_ERROR_OTHER_PERMANENT;
    } catch (const SourceError& error) {
        log("The image " + hex(id) + " does not come: " + error.what());
        outcome.error = error.number();
    } catch (const std::exception& error) {
        log("The image " + hex(id) + " cannot be shown: " + error.what());
        outcome.error = SP_ERROR_OTHER_PERMANENT;
    }
    return outcome;
}

void Images::finish(const std::string& id, const Outcome& outcome, bool mayAppear) {
    const Ref<sp_image> image = shelf.find(id);
    if (!image) {
        return;
    }
    if (outcome.found || !mayAppear) {
        image->finish(outcome.error, outcome.jpeg);
    } else if (library->isSettling()) {
        missing.insert(id);
    } else {
        request(id);
    }
}

void Images::tellLater(const std::string& id) {
    if (!closed) {
        answer([this, id] {
            if (const Ref<sp_image> image = shelf.find(id)) {
                image->tell();
            }
        });
    }
}

}  // namespace sonolet::service
