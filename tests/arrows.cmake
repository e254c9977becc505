# Who may include whom: cmake -DROOT=... -P arrows.cmake. Arrows go one way, so a folder can be read
# with those it points to and no other.

cmake_minimum_required(VERSION 3.25)

# Folders of the repository, and the platform's declarations; nobody else.
set(folders platform Src host layer service)
set(platform_sees)
set(Src_sees platform)
set(host_sees platform)
set(layer_sees platform)
set(service_sees platform)

# Rooms, each with those that it may include. What stands beside the rooms is everybody's.
set(host_rooms
    "engine:"
    "log:"
    "media:"
    "options: log media"
    "runner: engine log media options"
    "browser: engine media options")
set(layer_rooms
    "tap:"
    "calls: tap"
    "record: calls tap"
    "validate: tap"
    "tools: tap"
    "replay: calls tap tools")
set(service_rooms
    "store:"
    "threads:"
    "faults: store"
    "music: store"
    "accounts: music store"
    "catalogue: music store"
    "search: catalogue store"
    "source: accounts music search store"
    "folder: accounts catalogue music search source store"
    "objects: accounts catalogue faults source store"
    "lists: accounts objects"
    "queries: lists objects source"
    "images: catalogue music objects source store threads"
    "player: music"
    "session: accounts catalogue faults images lists objects player queries source store threads"
    "subsonic: source store"
    "server: accounts catalogue music search source store subsonic threads"
    "choice: folder server source store"
    "api: images lists objects queries session"
    "tools: accounts catalogue faults search source store"
    "demo: tools")

set(wrong "")
foreach(folder IN LISTS folders)
    file(GLOB_RECURSE files RELATIVE ${ROOT}/${folder}
        ${ROOT}/${folder}/*.h ${ROOT}/${folder}/*.cpp ${ROOT}/${folder}/*.c)
    if(NOT files)
        list(APPEND wrong "${folder} has no sources")
    endif()
    foreach(file IN LISTS files)
        get_filename_component(beside ${ROOT}/${folder}/${file} DIRECTORY)
        file(STRINGS ${ROOT}/${folder}/${file} lines REGEX "^ *# *include *\"")
        foreach(line IN LISTS lines)
            string(REGEX REPLACE ".*\"(.*)\".*" "\\1" name "${line}")
            # The first place that has it, as for the compiler.
            set(found "")
            foreach(place IN ITEMS ${beside} ${ROOT}/${folder} ${ROOT}/platform)
                get_filename_component(path ${name} ABSOLUTE BASE_DIR ${place})
                if(NOT found AND EXISTS ${path})
                    file(RELATIVE_PATH found ${ROOT} ${path})
                endif()
            endforeach()
            if(NOT found)
                list(APPEND wrong "${folder}/${file} includes ${name}")
                continue()
            endif()
            string(REGEX MATCH "^[^/]*" owner ${found})
            if(NOT owner STREQUAL folder AND NOT owner IN_LIST ${folder}_sees)
                list(APPEND wrong "${folder}/${file} includes ${name}")
            elseif(DEFINED ${folder}_rooms AND "${folder}/${file} ${found}" MATCHES
                    "^${folder}/([^/]*)/[^ ]* ${folder}/([^/]*)/")
                set(from ${CMAKE_MATCH_1})
                set(to ${CMAKE_MATCH_2})
                set(allowed FALSE)
                foreach(room IN LISTS ${folder}_rooms)
                    if(room MATCHES "^${from}:" AND "${room} ${from}" MATCHES " ${to}( |$)")
                        set(allowed TRUE)
                    endif()
                endforeach()
                if(NOT allowed)
                    list(APPEND wrong "${folder}/${file} includes ${name}")
                endif()
            endif()
        endforeach()
    endforeach()
endforeach()
if(wrong)
    list(JOIN wrong "\n  " text)
    message(FATAL_ERROR "These arrows are not in tests/arrows.cmake:\n  ${text}")
endif()
