// SPDX-License-Identifier: Apache-2.0
// On the phone every path is used unchanged.
#pragma once

inline const char* phone_path(const char* path) { return path; }
