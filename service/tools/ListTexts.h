#ifndef SONOLET_SERVICE_TOOLS_LIST_TEXTS_H
#define SONOLET_SERVICE_TOOLS_LIST_TEXTS_H

#include "tools/Lists.h"

#include <cstddef>
#include <string>

// Lists as texts. Errors: as those of Lists.
namespace sonolet::service {

// The user's lists on standard output, a line each: name, link, number of tracks; what is in a
// folder is indented.
void printLists(Lists& lists);

// A list on standard output: what it is, then a line for each track with place, link, artist,
// title, who added it and the message.
void printList(Lists& lists, const ListRow& shown);

// As an M3U8 file with absolute paths; `left`: how many tracks were left out, because their files
// are not there or have names that no line can hold.
std::string asM3u(Lists& lists, const ListRow& exported, std::size_t& left);

}  // namespace sonolet::service

#endif
