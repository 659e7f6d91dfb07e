# Warnings are errors everywhere; uninstrumented library headers come in as system includes.
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Wold-style-cast -Woverloaded-virtual -Wnull-dereference -Wformat=2 -Werror)

# The sanitizers' added branches make g++ 12 see null dereferences and overflows that cannot happen.
if(TRV_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Wno-null-dereference -Wno-maybe-uninitialized)
endif()
