# What is given to people resists the exploitation of a fault: nothing to write in what the loader has
# resolved, no executable stack, a canary in each frame, code at a random place, landing pads for jumps
# where the processor knows them, and checked copies in what is optimised. And what it costs leaves
# the plug-in, optimised for size, small enough for a device.
cmake_minimum_required(VERSION 3.25)

set(imports "")
foreach(file IN LISTS FILES)
    execute_process(COMMAND ${READELF} --wide --file-header --segments --dynamic --dyn-syms --notes ${file}
        OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    string(APPEND imports "${text}")
    foreach(wanted IN ITEMS "Type: +DYN" "GNU_RELRO" "\\(FLAGS\\)[^\n]*BIND_NOW" "\\(FLAGS_1\\)[^\n]*NOW"
            "GNU_STACK[^\n]* RW " "__stack_chk_fail")
        if(NOT text MATCHES "${wanted}")
            message(SEND_ERROR "${file}: no ${wanted}")
        endif()
    endforeach()
    if(text MATCHES "TEXTREL" OR text MATCHES "LOAD[^\n]* RWE ")
        message(SEND_ERROR "${file}: code that can be written")
    endif()
    if(text MATCHES "Machine: +(Intel 80386|Advanced Micro)")
        file(READ ${file} bytes HEX)
        # endbr32 or endbr64
        if(NOT bytes MATCHES "f30f1ef[ab]" OR NOT text MATCHES "x86 feature: [IBT, ]*SHSTK")
            message(SEND_ERROR "${file}: not made for CET")
        endif()
    endif()
    if(text MATCHES "Intel 80386" AND CONFIG STREQUAL MinSizeRel)
        execute_process(COMMAND ${STRIP} -o stripped.so ${file} COMMAND_ERROR_IS_FATAL ANY)
        file(SIZE stripped.so size)
        file(REMOVE stripped.so)
        if(size GREATER 358400)
            message(SEND_ERROR "${file}: ${size} bytes are more than 350 KiB")
        endif()
    endif()
endforeach()
if(NOT CONFIG STREQUAL Debug AND NOT imports MATCHES "__[a-z]+_chk")
    message(SEND_ERROR "no copy is checked")
endif()
