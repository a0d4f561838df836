# One library per folder of the product. Sources are found by their place, so that a new unit needs no entry here;
# platform/ adds the half of the machine that is built for.

set(TARNWING_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_BUILD_TYPE MATCHES Rel)
    # The optimiser of g++ 12 takes the joining of two short strings for an overlapping copy.
    list(APPEND TARNWING_WARNINGS -Wno-restrict)
endif()
add_compile_options(${TARNWING_WARNINGS})
include_directories(${PROJECT_SOURCE_DIR})

if(WIN32)
    set(TARNWING_PLATFORM_HALF windows)
else()
    set(TARNWING_PLATFORM_HALF posix)
endif()
set(TARNWING_ENTRY_SOURCE ${PROJECT_SOURCE_DIR}/platform/${TARNWING_PLATFORM_HALF}/program_entry.cpp)

function(tarnwing_library name)
    cmake_parse_arguments(ARG "" "FOLDER" "SOURCES;EXCLUDE;LINK" ${ARGN})
    if(NOT ARG_FOLDER)
        set(ARG_FOLDER ${name})
    endif()
    if(NOT ARG_SOURCES)
        file(GLOB ARG_SOURCES CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/${ARG_FOLDER}/*.cpp)
        if(name STREQUAL platform)
            file(GLOB half CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
                 ${PROJECT_SOURCE_DIR}/platform/${TARNWING_PLATFORM_HALF}/*.cpp)
            list(REMOVE_ITEM half platform/${TARNWING_PLATFORM_HALF}/program_entry.cpp)
            list(APPEND ARG_SOURCES ${half})
        endif()
        if(ARG_EXCLUDE)
            list(REMOVE_ITEM ARG_SOURCES ${ARG_EXCLUDE})
        endif()
    endif()
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC ${ARG_LINK})
    if(name STREQUAL platform AND WIN32)
        target_link_libraries(platform PUBLIC ws2_32 winmm gdi32 shell32 ole32 uuid advapi32 user32)
    endif()
endfunction()

# The target transport from the vendor's own library: the file SimConnect of its folder, or of the folder lib in it.
# The calls are declared by sim/simconnect.h either way; the vendor's headers are only put within reach.
function(tarnwing_vendor_transport folder)
    find_library(TARNWING_SIMCONNECT_LIBRARY SimConnect PATHS ${folder} PATH_SUFFIXES lib
                 REQUIRED NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    add_library(transport INTERFACE)
    target_include_directories(transport SYSTEM INTERFACE ${folder} ${folder}/include)
    target_link_libraries(transport INTERFACE ${TARNWING_SIMCONNECT_LIBRARY} core)
endfunction()
