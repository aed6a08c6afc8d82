# SPDX-License-Identifier: Apache-2.0
# What makes a memory error harder to use: in everything that is built to be run, except in builds
# with sanitizers, whose own checks it would get in the way of.

# Indirect calls may only arrive at functions of the right type (clang; needs link-time optimization
# and lld). For the daemon's objects, in place of marked branch targets: clang 14 misplaces the
# targets of checked calls when they are marked as well.
option(QOREXT_CFI "check indirect calls of the daemon" OFF)

function(check_indirect_calls target)
  if(QOREXT_CFI)
    target_compile_options(${target} PRIVATE -flto -fsanitize=cfi)
    if(takes_fcf_protection_full)
      target_compile_options(${target} PRIVATE -fcf-protection=return)
    endif()
    target_link_options(${target} PUBLIC -flto -fsanitize=cfi -fuse-ld=lld)
  endif()
endfunction()

if(QOREXT_SANITIZE OR QOREXT_COVERAGE)
  return()
endif()

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# Adds the first of the flags that the compiler takes without a warning.
function(add_first_known_flag)
  foreach(flag ${ARGN})
    string(MAKE_C_IDENTIFIER "takes${flag}" is_known)
    set(CMAKE_REQUIRED_FLAGS -Werror)
    check_cxx_compiler_flag(${flag} ${is_known})
    if(${is_known})
      add_compile_options(${flag})
      return()
    endif()
  endforeach()
endfunction()

add_compile_options(-fstack-protector-strong)
add_first_known_flag(-fstack-clash-protection)
add_first_known_flag(-fcf-protection=full -mbranch-protection=standard)

# Level 3 checks sizes that are known only when the program runs; it and level 2 need optimization.
set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("#include <string.h>\nint main() { return 0; }" QOREXT_FORTIFY_3)
unset(CMAKE_REQUIRED_FLAGS)
set(fortify_level 2)
if(QOREXT_FORTIFY_3)
  set(fortify_level 3)
endif()
add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=${fortify_level}>")

add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
