# Compile rules that hold in every room, and tessarine_room(), which makes a room's target.

add_library(tessarine_rules INTERFACE)
# Integers wrap and floats keep their written order of operations: results must not depend on
# what an optimiser may prove about overflow, nor on fused multiply-adds of one machine.
target_compile_options(tessarine_rules INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Werror -fwrapv -ffp-contract=off -fno-math-errno)
# g++ 12 forgets the rounding to a float where it joins two neighbouring chains double, float,
# double outside of loops into vectors. Loops are vectorised all the same.
target_compile_options(tessarine_rules INTERFACE -fno-tree-slp-vectorize)
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
  # It knows no attribute that keeps one function from becoming vector code, and takes what is
  # written without a branch for a slip.
  target_compile_options(tessarine_rules INTERFACE -Wno-unknown-attributes
    -Wno-bitwise-instead-of-logical -Wno-bitwise-conditional-parentheses)
endif()
if(TESSARINE_SANITIZE)
  target_compile_options(tessarine_rules INTERFACE
    -fsanitize=${TESSARINE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(tessarine_rules INTERFACE -fsanitize=${TESSARINE_SANITIZE})
  if(NOT TESSARINE_SANITIZE MATCHES address)
    # The check of virtual tables asks the system whether memory can be read, in a way that the
    # helper's cage refuses. Under the address sanitizer the cage is open.
    target_compile_options(tessarine_rules INTERFACE -fno-sanitize=vptr)
  endif()
endif()

# The levels of the processor for which the rooms of pixel work are built besides the lowest.
set(TESSARINE_LEVELS "")
if(CMAKE_SYSTEM_PROCESSOR STREQUAL x86_64 AND TESSARINE_VECTOR_LEVELS AND NOT TESSARINE_SANITIZE)
  set(TESSARINE_LEVELS x86-64-v3 x86-64-v4)
endif()
# Where the programs find these rooms, seen from where programs lie.
set(TESSARINE_LIBRARY_FOLDER lib/tessarine)

# tessarine_room(NAME [VECTORISED] [USES ROOM...] [LIBRARIES TARGET...])
# A room is a static library of all sources of its folder, but for the main.cpp of a program. Its
# headers are included as "NAME/header.h", and only those of the rooms that it uses are on its
# include path: each room publishes a folder of its own that holds nothing but a link to it.
#
# A VECTORISED room is a shared library, built once for any processor and once for each higher
# level; the system's loader takes the best that the processor can do, out of a folder that it
# knows by name (glibc-hwcaps). All give the same bytes: nothing in them is contracted or reordered.
function(tessarine_room name)
  cmake_parse_arguments(ROOM "VECTORISED" "" "USES;LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  set(door ${PROJECT_BINARY_DIR}/doors/${name})
  file(MAKE_DIRECTORY ${door})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${door}/${name} SYMBOLIC)
  tessarine_room_target(tessarine_${name} "")
  if(ROOM_VECTORISED)
    foreach(level IN LISTS TESSARINE_LEVELS)
      tessarine_room_target(tessarine_${name}_${level} ${level})
      add_dependencies(tessarine_${name} tessarine_${name}_${level})
    endforeach()
  endif()
endfunction()

# One build of the room that tessarine_room() describes; `level` is empty for the lowest.
function(tessarine_room_target target level)
  set(kind STATIC)
  if(ROOM_VECTORISED)
    set(kind SHARED)
  endif()
  add_library(${target} ${kind} ${sources})
  target_include_directories(${target} PUBLIC ${door})
  target_link_libraries(${target} PRIVATE tessarine_rules ${ROOM_LIBRARIES})
  foreach(room IN LISTS ROOM_USES)
    target_link_libraries(${target} PUBLIC tessarine_${room})
  endforeach()
  if(NOT ROOM_VECTORISED)
    return()
  endif()

  # Nobody traps what the processor can report of floats: so a choice between two may be worked out
  # as both of them, as vector code has to.
  target_compile_options(${target} PRIVATE -O3 -fno-semantic-interposition -fno-trapping-math)
  set(folder ${TESSARINE_LIBRARY_FOLDER})
  if(level)
    target_compile_options(${target} PRIVATE -march=${level})
    string(APPEND folder /glibc-hwcaps/${level})
  endif()
  set_target_properties(${target} PROPERTIES OUTPUT_NAME tessarine_${name}
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${folder} INSTALL_RPATH "\$ORIGIN")
  install(TARGETS ${target} LIBRARY DESTINATION ${folder} COMPONENT runner)
endfunction()
