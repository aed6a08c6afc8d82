# SPDX-License-Identifier: Apache-2.0
# Cross-builds with clang, as the phone's tree does, against the unpacked arm64 packages of
# tests/handset/fetch; tests that need nothing but the processor run under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/handset/sysroot)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
