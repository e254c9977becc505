#include "catalogue/WordIndex.h"

namespace sonolet::service {

WordIndex::WordIndex(Database& database)
    : tracks(database,
             "INSERT INTO track_index(rowid, title, artist, album, year)"
             " SELECT id, title, artist, album, year FROM track_texts WHERE id = ?1",
             "INSERT INTO track_index(track_index, rowid, title, artist, album, year)"
             " SELECT 'delete', id, title, artist, album, year FROM track_texts WHERE id = ?1"),
      albums(database,
             "INSERT INTO album_index(rowid, name, artist, year)"
             " SELECT id, name, artist, year FROM album_texts WHERE id = ?1",
             "INSERT INTO album_index(album_index, rowid, name, artist, year)"
             " SELECT 'delete', id, name, artist, year FROM album_texts WHERE id = ?1"),
      artists(database,
              "INSERT INTO artist_index(rowid, name)"
              " SELECT id, name FROM artist_texts WHERE id = ?1",
              "INSERT INTO artist_index(artist_index, rowid, name)"
              " SELECT 'delete', id, name FROM artist_texts WHERE id = ?1") {}

}  // namespace sonolet::service
