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
endfunction()
