# app_bundle(TARGET NAME IDENTIFIER [PROGRAMS targets...] [RESOURCES bundles...] [PLUGIN]): lays out apps/NAME.app as it is installed:
# Contents/Info.plist, Contents/Linux with the program (called NAME) and others, Contents/lib with what they load, Contents/Resources.
function(app_bundle target name identifier)
  cmake_parse_arguments(app "PLUGIN" "" "PROGRAMS;RESOURCES" ${ARGN})
  set(bundle ${CMAKE_BINARY_DIR}/apps/${name}.app)
  set(contents ${bundle}/Contents)
  set(app_name ${name})
  set(app_identifier ${identifier})
  configure_file(${PROJECT_SOURCE_DIR}/Resources/AppInfo.plist.in ${CMAKE_CURRENT_BINARY_DIR}/${name}-Info.plist @ONLY)
  set(commands
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${bundle}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${contents}/Linux ${contents}/lib ${contents}/Resources
    COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_BINARY_DIR}/${name}-Info.plist ${contents}/Info.plist
    COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:${target}> ${contents}/Linux/${name}
    COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:Platform> ${contents}/lib)
  set(needed ${target} Platform)
  foreach(program ${app_PROGRAMS})
    list(APPEND commands COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:${program}> ${contents}/Linux)
    list(APPEND needed ${program})
  endforeach()
  foreach(resource ${app_RESOURCES})
    list(APPEND commands COMMAND ${CMAKE_COMMAND} -E copy_directory ${CMAKE_BINARY_DIR}/apps/${resource}.app ${contents}/Resources/${resource}.app)
    list(APPEND needed ${CMAKE_BINARY_DIR}/apps/${resource}.stamp)
  endforeach()
  if(app_PLUGIN)
    list(APPEND commands COMMAND ${CMAKE_COMMAND} -E copy_directory ${CMAKE_BINARY_DIR}/lib/VeltrikAppKit.bundle ${contents}/lib/VeltrikAppKit.bundle)
    list(APPEND needed VeltrikAppKitBundle)
  endif()
  add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/apps/${name}.stamp ${commands}
    COMMAND ${CMAKE_COMMAND} -E touch ${CMAKE_BINARY_DIR}/apps/${name}.stamp
    DEPENDS ${needed} ${CMAKE_CURRENT_BINARY_DIR}/${name}-Info.plist VERBATIM)
  add_custom_target(${name}App ALL DEPENDS ${CMAKE_BINARY_DIR}/apps/${name}.stamp)
endfunction()
