// SPDX-License-Identifier: Apache-2.0
// The location of the phone's files on a workstation.
#pragma once

// Prefixes an absolute path of the phone with the folder in the environment variable
// QOREXT_PHONE_ROOT. Returns the path unchanged when the variable is unset or empty, or the path is
// empty. When the result would exceed PATH_MAX, returns a path that system calls refuse with
// ENAMETOOLONG. The result is valid until the calling thread's next call but one, so that rename()
// or symlink() can map both of its paths.
const char* phone_path(const char* path);
