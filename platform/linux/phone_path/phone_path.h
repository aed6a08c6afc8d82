// SPDX-License-Identifier: Apache-2.0
// Where the phone's files lie on a workstation.
#pragma once

// Puts the folder named by the environment variable QOREXT_PHONE_ROOT in front of an absolute path
// of the phone. The path as it is when the variable is unset or empty; an empty path stays empty. A
// result longer than PATH_MAX allows is a path that every call refuses with ENAMETOOLONG. The text
// lives until the calling thread's second next call, so that one call of rename() or symlink() can
// map both of its paths.
const char* phone_path(const char* path);
