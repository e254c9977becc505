#ifndef SONOLET_TRACK_ARRAY_H
#define SONOLET_TRACK_ARRAY_H

#include "Playlist.h"
#include "Track.h"
#include "jspp/interface.h"

#include <string>
#include <vector>

// A list of tracks with the shape of a script array: "length", "item" and decimal indexes, all
// read-only. Every other name is refused with "bad_lexical_cast", an index that is not there with
// "Out of bounds array access". Script thread; the list never changes and keeps its tracks alive.
class Playlist::track_array final : public jspp::interface {
public:
    // No track is null.
    explicit track_array(std::vector<orvo::shared_ptr<Track>> tracks);

private:
    // Script: "length" is how many there are; "item" takes a number, which is truncated, an index
    // its digits.
    void get_length(jspp::result_context& context) const;
    void item(jspp::function_context& context) const;
    void index_get(const std::string& name, jspp::result_context& context) const;
    void returnItem(int index, jspp::result_context& context) const;

    const std::vector<orvo::shared_ptr<Track>> items;
};

#endif
