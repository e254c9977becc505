#include "folder/FolderSource.h"

#include "folder/FolderAnswers.h"
#include "folder/FolderPictures.h"
#include "music/MusicFile.h"

#include <utility>

namespace sonolet::service {

FolderSource::FolderSource(SourceEvents toSession, std::string musicFolder)
    : events(std::move(toSession)), music(std::move(musicFolder)),
      scan(events, music, [this](Scan::Pass pass) { scanned(pass); }) {}

Kept FolderSource::files(const StatePaths& paths) {
    return {paths.accountsFile(), paths.catalogueFile(music)};
}

void FolderSource::start(const Kept& kept) {
    settling = true;
    scan.start(kept);
}

void FolderSource::stop() {
    watch.reset();
    scan.stop();
}

void FolderSource::scanned(Scan::Pass pass) {
    if (pass == Scan::Pass::again) {
        return;  // whoever reads the catalogue sees that it has changed
    }
    settling = false;
    if (watch == nullptr) {
        // The clock of files is a little behind.
        constexpr std::int64_t grain = 20000000;
        watch = std::make_unique<FolderWatch>(
            music, scan.begun() - grain, [this] { events.post([this] { scan.again(); }); },
            FolderWatch::Limits());
    }
    events.settled();
}

template <typename Action>
void FolderSource::orLog(const char* consequence, Action action) const {
    try {
        action();
    } catch (const std::exception& error) {
        events.log(std::string(consequence) + ": " + error.what());
    }
}

Admission FolderSource::admit(
    Accounts& store, const std::string& name, const Secret& secret, bool isBlob, bool remember) {
    Admission admission;
    admission.account = isBlob ? store.checkBlob(name, secret) : store.checkPassword(name, secret);
    if (!admission.account) {
        return admission;
    }
    // Who is right is let in, though the disk be full.
    const std::int64_t id = admission.account->id;
    if (remember) {
        orLog("The user is not remembered", [&] { store.remember(id); });
    }
    orLog("There is no new blob", [&] { admission.blob = store.issueBlob(id); });
    return admission;
}

Admission FolderSource::admitRemembered(Accounts& store) {
    Admission admission;
    admission.account = store.remembered();
    return admission;
}

std::optional<std::string> FolderSource::remembered(Accounts& store) {
    const std::optional<Account> account = store.remembered();
    return account ? std::optional<std::string>(account->name) : std::nullopt;
}

std::unique_ptr<Answers> FolderSource::answers(const Kept& kept) {
    return std::make_unique<FolderAnswers>(kept);
}

std::unique_ptr<Pictures> FolderSource::pictures(const std::string& catalogue,
                                                 const StopFlag& stop) {
    return std::make_unique<FolderPictures>(catalogue, music, stop);
}

std::shared_ptr<const Sound> FolderSource::openSound(const std::string& soundPath) {
    return std::make_shared<const MusicFile>(soundPath);
}

}  // namespace sonolet::service
