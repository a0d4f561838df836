# Compiles through ccache when the machine has it; the presets include this before anything else.
find_program(TARNWING_CCACHE ccache)
mark_as_advanced(TARNWING_CCACHE)
if(TARNWING_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${TARNWING_CCACHE})
endif()
