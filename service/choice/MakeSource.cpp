#include "folder/FolderSource.h"
#include "server/ServerSource.h"
#include "source/Source.h"
#include "store/StatePaths.h"

#include <utility>

namespace sonolet::service {

std::unique_ptr<Source> makeSource(SourceEvents events) {
    if (!serverAddress().empty()) {
        return std::make_unique<ServerSource>(std::move(events), ServerOptions::fromEnvironment());
    }
    return std::make_unique<FolderSource>(std::move(events), musicFolder());
}

}  // namespace sonolet::service
