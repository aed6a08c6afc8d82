// SPDX-License-Identifier: Apache-2.0
// Serves the parent's requests, one at a time.
#pragma once

// Reads and answers requests until the parent closes its end of the pipe. Failures of select and
// read are logged and tried again, without end.
void serve_requests(int read_fd);
