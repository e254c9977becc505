#!/usr/bin/env bash
# record.sh MUSIC >answers.json: what supysonic says to each method that the client calls, over a
# folder of music with covers. "METHOD" is an answer as it came, "METHOD NOTE" another of the same.
set -euo pipefail
music=$(realpath "$1")
state=$(mktemp -d)
export HOME=$state
cd "$state"
printf '[base]\ndatabase_uri = sqlite:///%s/supysonic.db\n[webapp]\ncache_dir = %s/cache\n' \
    "$state" "$state" >supysonic.conf
{
    supysonic-cli user add listener -p listener
    supysonic-cli user add ann -p ann
    supysonic-cli user setroles --admin listener
    supysonic-cli folder add music "$music"
    supysonic-cli folder scan --foreground
} >&2
port=4${RANDOM:0:3}9
supysonic-server -S gunicorn --host 127.0.0.1 --port "$port" >/dev/null 2>&1 &
server=$!
trap 'kill $server; rm -r "$state"' EXIT

# get METHOD [PARAMETER=VALUE...]
get() {
    local arguments=() user=${as:-listener}
    for parameter in "${@:2}"; do
        arguments+=(--data-urlencode "$parameter")
    done
    curl --silent --get --retry 20 --retry-connrefused --retry-delay 1 "${arguments[@]}" \
        --data "f=json&v=1.16.1&c=record&u=$user&p=$user" "http://127.0.0.1:$port/rest/$1.view"
}
# keep NAME [PARAMETER=VALUE...]
keep() {
    get "${1%% *}" "${@:2}" | jq -c --arg name "$1" '{($name): .}' >>answers
}
# of FILTER: what it finds in the answer that was kept last, a line each.
of() {
    tail -n 1 answers | jq -r ".[][\"subsonic-response\"] | $1"
}

keep ping
keep search3 query=
mapfile -t songs < <(of '.searchResult3.song[].id')
keep star "id=${songs[0]}"
for _ in 1 2; do
    get stream "id=${songs[1]}" format=raw >sound
done
get getSong "id=${songs[1]}" >song
album=$(jq -r '.[].song.albumId' song)
artist=$(jq -r '.[].song.artistId' song)
get star "id=${songs[1]}" "albumId=$album" "artistId=$artist" >sound
keep getSong "id=${songs[1]}"
keep getAlbum "id=$album"
keep getArtist "id=$artist"
keep 'getAlbumList2 newest' type=newest size=10
keep 'getAlbumList2 frequent' type=frequent size=10
keep getStarred2
get createPlaylist name=Mix "songId=${songs[2]}" "songId=${songs[0]}" >sound
keep getPlaylists
mix=$(of '.playlists.playlist[0].id')
keep updatePlaylist "playlistId=$mix" comment=blue public=true
keep getPlaylists
keep getPlaylist "id=$mix"
keep createPlaylist name=Made
keep 'getPlaylists made'
made=$(of '.playlists.playlist[] | select(.name == "Made").id')
keep 'getPlaylist made' "id=$made"
keep deletePlaylist "id=$made"
keep 'getPlaylist gone' "id=$made"
keep unstar "id=${songs[0]}"
keep scrobble "id=${songs[0]}" submission=false
keep getUsers
as=ann keep 'getUsers refused'
keep 'getCoverArt refused' "id=$made"
keep 'download refused' "id=$made"
# An answer a line.
jq --slurp -r 'add | to_entries | map("\(.key | tojson): \(.value | tojson)") | "{\n" + join(",\n") + "\n}"' answers
