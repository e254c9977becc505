#include "tools/Visit.h"

#include "tools/Ask.h"

#include <iostream>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace sonolet::service {

namespace {

struct LastLine {
    std::mutex mutex;
    std::string text;
};

}  // namespace

Visit::Visit(const StatePaths& paths, const std::optional<std::string>& user) {
    SourceEvents events;
    // The last line is why nobody is let in. Its threads may say more later.
    const auto said = std::make_shared<LastLine>();
    events.log = [said](std::string line) {
        const std::lock_guard<std::mutex> lock(said->mutex);
        said->text = std::move(line);
    };
    // Nobody processes events here; what changes is read anew.
    events.post = [](const std::function<void()>&) {};
    from = makeSource(events);
    kept = from->files(paths);
    Accounts accounts(kept.accounts, from->firstAccount());
    static_cast<void>(Catalogue::openOrBegin(
        kept.catalogue, [](const std::string& line) { std::cerr << line << '\n'; }));
    from->start(kept);
    Admission admission;
    if (user) {
        admission =
            from->admit(accounts, *user, askPassword("Password for " + *user + ": "), false, false);
    } else if (from->remembered(accounts)) {
        admission = from->admitRemembered(accounts);
    } else {
        admission = from->admit(accounts, "listener", Secret("listener"), false, false);
    }
    if (!admission.account) {
        from->stop();
        throw std::runtime_error(said->text.empty() ? "the server lets nobody in" : said->text);
    }
    entered = admission.account;
    from->enter(*entered);
}

void Visit::agreeOnLists() {
    try {
        from->agreeOnLists();
    } catch (const SourceError& error) {
        std::cerr << error.what()
                  << "\nWhat is changed is kept here, and told to the server later\n";
    }
}

Visit::~Visit() {
    from->stop();
}

void Visit::learnEverything() {
    const std::unique_ptr<Answers> answers = from->answers(kept);
    int known = 0;
    constexpr int often = 10000;
    for (int more = 0; (more = answers->learn(known)) > 0;) {
        known += more;
        if (known / often != (known - more) / often) {
            std::cerr << known << " tracks so far\n";
        }
    }
}

}  // namespace sonolet::service
