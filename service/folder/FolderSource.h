#ifndef SONOLET_SERVICE_FOLDER_FOLDER_SOURCE_H
#define SONOLET_SERVICE_FOLDER_FOLDER_SOURCE_H

#include "folder/FolderWatch.h"
#include "folder/Scan.h"
#include "source/Source.h"

#include <memory>
#include <optional>
#include <string>

namespace sonolet::service {

// Music in a folder on this machine: a scan fills the catalogue, which then answers everything, and
// the accounts are those of this machine, with their passwords' hashes. It is never away; a folder
// that cannot be read is a line of the log, and what was known of it stays known.
//
// Threads and errors are as for Source. Sounds are opened at their place in the folder.
class FolderSource final : public Source {
public:
    // Looks at nothing yet: the folder need not be there.
    FolderSource(SourceEvents toSession, std::string musicFolder);

    std::string description() const override { return music; }
    Kept files(const StatePaths& paths) override;
    Accounts::First firstAccount() const override { return Accounts::First::listener; }

    void start(const Kept& kept) override;
    void stop() override;
    void rebuild(const DatabaseError& error) override { scan.rebuild(error); }

    // While the first scan goes on, what is missing may still come; afterwards it is nowhere.
    bool isSettling() const override { return settling; }
    sp_error absence(sp_linktype, const Id&) override {
        return settling ? SP_ERROR_IS_LOADING : SP_ERROR_OTHER_PERMANENT;
    }

    Admission admit(Accounts& store,
                    const std::string& name,
                    const Secret& secret,
                    bool isBlob,
                    bool remember) override;
    Admission admitRemembered(Accounts& store) override;
    std::optional<std::string> remembered(Accounts& store) override;
    void forget(Accounts& store) override { store.forget(); }

    std::unique_ptr<Answers> answers(const Kept& kept) override;
    std::unique_ptr<Pictures> pictures(const std::string& catalogue, const StopFlag& stop) override;
    std::string soundPath(const std::string& path) const override { return music + '/' + path; }
    std::shared_ptr<const Sound> openSound(const std::string& soundPath) override;

private:
    // The owner's: a pass is over, and what is in the folder is in the catalogue.
    void scanned(Scan::Pass pass);
    // What fails is a line that begins with the consequence.
    template <typename Action>
    void orLog(const char* consequence, Action action) const;

    // Constant after construction.
    const SourceEvents events;
    const std::string music;

    bool settling = true;  // until the first scan of these files is over
    Scan scan;
    std::unique_ptr<FolderWatch> watch;
};

}  // namespace sonolet::service

#endif
