# What the plug-in shows to the dynamic loader is what it promises: four symbols, its name, and
# nothing needed but the language's runtimes and two libraries of the device.
cmake_minimum_required(VERSION 3.25)

function(expect what found expected)
    list(SORT found)
    list(SORT expected)
    if(NOT found STREQUAL expected)
        message(FATAL_ERROR "${what}: found '${found}', expected '${expected}'")
    endif()
endfunction()

execute_process(COMMAND ${READELF} --wide --dyn-syms --dynamic ${PLUGIN}
    OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "[" "<" text "${text}")  # brackets would keep lines together
string(REPLACE "]" ">" text "${text}")
string(REPLACE "\n" ";" lines "${text}")
foreach(line IN LISTS lines)
    if(line MATCHES " DEFAULT +UND +([^ @]+)")
        list(APPEND imported ${CMAKE_MATCH_1})
    elseif(line MATCHES "(GLOBAL|WEAK|UNIQUE) +DEFAULT +[0-9]+ +([^ @]+)")
        list(APPEND exported ${CMAKE_MATCH_2})
    elseif(line MATCHES "\\(NEEDED\\).*<(.*)>")
        list(APPEND needed ${CMAKE_MATCH_1})
    elseif(line MATCHES "\\(SONAME\\).*<(.*)>")
        list(APPEND soname ${CMAKE_MATCH_1})
    endif()
endforeach()
expect("exported symbols" "${exported}"
    "alphabet;g_spotify_instance_Spotify;jspp_add_poll_function;jsplugin_capabilities")
# Not every 32-bit processor has an instruction for each; the library that does without is not
# everywhere.
set(atomics ${imported})
list(FILTER atomics INCLUDE REGEX "^__(atomic|sync)_")
expect("atomic operations by a library" "${atomics}" "")
list(FILTER imported INCLUDE REGEX "UVA")
list(LENGTH imported count)
expect("number of symbols of the media backend" ${count} 2)
list(FILTER needed EXCLUDE REGEX
    "^(libc|libm|libgcc_s|libstdc\\+\\+|libpthread|ld(-linux.*)?|libasan|libtsan|libubsan)\\.so")
expect("needed libraries" "${needed}" "libKelLogOld.so;libspotify.so.12")
expect("soname" "${soname}" "libSonolet.so.1.0")
