#include "folder/FolderSource.h"
#include "source/Source.h"
#include "store/StatePaths.h"

#include <utility>

namespace sonolet::service {

std::unique_ptr<Source> makeSource(SourceEvents events) {
    return std::make_unique<FolderSource>(std::move(events), musicFolder());
}

}  // namespace sonolet::service
