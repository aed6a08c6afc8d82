// SPDX-License-Identifier: Apache-2.0
// System properties, as the phone's libcutils exports them.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// Room for a property's value: at most 91 characters and the terminating NUL.
#define PROPERTY_VALUE_MAX 92

// Copies the value of `key` into `value` (PROPERTY_VALUE_MAX bytes), or `default_value` when the
// property is not set or empty; a null default leaves an empty text. Returns the length of the text
// stored.
int property_get(const char* key, char* value, const char* default_value);

// Returns 0, or a negative value when the key or value is refused or cannot be stored. A property
// whose name begins with "ro." can be set once.
int property_set(const char* key, const char* value);

#ifdef __cplusplus
}
#endif
