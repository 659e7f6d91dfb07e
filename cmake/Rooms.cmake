# SPDX-License-Identifier: MIT
# trv_room(TARGET [INTERFACE])
#
# Lets this folder's headers be included as "folder/header.h" by the target itself and by those that link it, and by
# nobody else: each folder is reached through an include directory of its own, which holds nothing but a link to it. So
# the build fails where an include runs against the order in which the targets stand on each other.
function(trv_room target)
  set(scope PUBLIC)
  if(ARGC GREATER 1)
    set(scope ${ARGV1})
  endif()
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE folder)
  string(REPLACE / _ room ${folder})
  set(root ${PROJECT_BINARY_DIR}/include/${room})
  cmake_path(GET folder PARENT_PATH above)
  file(MAKE_DIRECTORY ${root}/${above})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${folder} SYMBOLIC)
  target_include_directories(${target} ${scope} ${root})
  trv_headers(${target} ${scope} ${root} ${folder})
endfunction()

# trv_headers(TARGET SCOPE ROOT FOLDER)
#
# The headers of FOLDER below ROOT are the target's header set, so that all_verify_interface_header_sets compiles each
# by itself.
function(trv_headers target scope root folder)
  if(NOT CMAKE_VERIFY_INTERFACE_HEADER_SETS)
    return()
  endif()
  file(GLOB headers CONFIGURE_DEPENDS ${root}/${folder}/*.h)
  target_sources(${target} ${scope} FILE_SET HEADERS BASE_DIRS ${root} FILES ${headers})
  if(scope STREQUAL "PUBLIC")
    # The check sees what the target's users see; headers of the target's own also use what only it links.
    target_link_libraries(${target} INTERFACE $<TARGET_PROPERTY:${target},LINK_LIBRARIES>)
  endif()
endfunction()
