# SPDX-License-Identifier: MIT
# Library headers come in as system includes. A preset decides whether warnings are errors.
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Wold-style-cast -Woverloaded-virtual -Wformat=2)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 sees overlapping copies in std::string's own concatenation that cannot happen.
  add_compile_options(-Wno-restrict)
  # The sanitizers' added branches make it see uses before initialisation that cannot happen, and keep it from
  # seeing that a replaced operator new and delete belong together.
  if(TRV_SANITIZE)
    add_compile_options(-Wno-maybe-uninitialized -Wno-mismatched-new-delete)
  endif()
endif()
