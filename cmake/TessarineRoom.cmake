# Compile rules that hold in every room, and tessarine_room(), which makes a room's target.

add_library(tessarine_rules INTERFACE)
# Integers wrap and floats keep their written order of operations: results must not depend on
# what an optimiser may prove about overflow, nor on fused multiply-adds of one machine.
target_compile_options(tessarine_rules INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Werror -fwrapv -ffp-contract=off -fno-math-errno)
# g++ 12 forgets the rounding to a float where it joins two neighbouring chains double, float,
# double outside of loops into vectors. Loops are vectorised all the same.
target_compile_options(tessarine_rules INTERFACE -fno-tree-slp-vectorize)
if(TESSARINE_SANITIZE)
  target_compile_options(tessarine_rules INTERFACE
    -fsanitize=${TESSARINE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(tessarine_rules INTERFACE -fsanitize=${TESSARINE_SANITIZE})
endif()

# tessarine_room(NAME [USES ROOM...] [LIBRARIES TARGET...])
# A room is a static library of all sources of its folder, but for the main.cpp of a program. Its
# headers are included as "NAME/header.h", and only those of the rooms that it uses are on its
# include path: each room publishes a folder of its own that holds nothing but a link to it.
function(tessarine_room name)
  cmake_parse_arguments(ROOM "" "" "USES;LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  add_library(tessarine_${name} STATIC ${sources})
  set(door ${PROJECT_BINARY_DIR}/doors/${name})
  file(MAKE_DIRECTORY ${door})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${door}/${name} SYMBOLIC)
  target_include_directories(tessarine_${name} PUBLIC ${door})
  target_link_libraries(tessarine_${name} PRIVATE tessarine_rules ${ROOM_LIBRARIES})
  foreach(room IN LISTS ROOM_USES)
    target_link_libraries(tessarine_${name} PUBLIC tessarine_${room})
  endforeach()
endfunction()
