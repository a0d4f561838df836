# Compiles through ccache when the machine has it; the presets include this before anything else.
find_program(TARNWING_CCACHE ccache)
mark_as_advanced(TARNWING_CCACHE)
if(TARNWING_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # It takes a precompiled header only when told that what it defines and its time do not matter.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${TARNWING_CCACHE})
endif()
