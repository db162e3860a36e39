# SPDX-License-Identifier: MIT
# CODETRACE_SANITIZE: a list for -fsanitize=, such as "address,undefined". Applies to everything
# that is built, so that library, tool and tests agree.
set(CODETRACE_SANITIZE "" CACHE STRING "Sanitizers to build with")

if(CODETRACE_SANITIZE)
  add_compile_options(-fsanitize=${CODETRACE_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${CODETRACE_SANITIZE})
endif()
