# The target transport from the vendor's own library: the file SimConnect of its folder, or of the folder lib in it.
# The calls are declared by sim/simconnect.h either way; the vendor's headers are only put within reach.
function(tarnwing_vendor_transport folder)
    # Not remembered: with another folder it is another file.
    find_library(library SimConnect PATHS ${folder} PATH_SUFFIXES lib
                 REQUIRED NO_CACHE NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    add_library(transport INTERFACE)
    target_include_directories(transport SYSTEM INTERFACE ${folder} ${folder}/include)
    target_link_libraries(transport INTERFACE ${library})
endfunction()
