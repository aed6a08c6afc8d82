// SPDX-License-Identifier: Apache-2.0
// On the phone every path is what it says.
#pragma once

inline const char* phone_path(const char* path) { return path; }
