# A room is a folder and a target of the same name that globs the folder's sources; includes are written from the root.

# room_sources(VARIABLE): the .cpp files of the current folder.
function(room_sources variable)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  set(${variable} ${sources} PARENT_SCOPE)
endfunction()

# room(NAME TYPE LIBRARIES...): a library of the current folder's sources.
function(room name type)
  room_sources(sources)
  if(NOT sources)
    # A room that holds only headers so far still is a target that others can name.
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/empty.cpp "")
    set(sources ${CMAKE_CURRENT_BINARY_DIR}/empty.cpp)
  endif()
  add_library(${name} ${type} ${sources})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARGN})
endfunction()
