# SPDX-License-Identifier: MIT
# TRV_SANITIZE: empty, "address,undefined" or "thread" (a preset sets it).
set(TRV_SANITIZE "" CACHE STRING "Sanitizers to build with")
if(TRV_SANITIZE)
  add_compile_options(-fsanitize=${TRV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TRV_SANITIZE})
endif()
