// Control codes of the test's Process Monitor device: the one that the module sends, and those by which
// the test looks at what came.
#pragma once

#define PROCMON_DEVICE_LOG 0x95358204u
// Answers with the oldest line that has not been read; fails when there is none.
#define PROCMON_DEVICE_READ 0x95358400u
// Lets the next line fail.
#define PROCMON_DEVICE_FAIL_NEXT 0x95358404u
// Answers with the number of open handles, a 32-bit value.
#define PROCMON_DEVICE_HANDLES 0x95358408u
// Answers with the number of lines that were sent, failed ones included, a 32-bit value.
#define PROCMON_DEVICE_LINES 0x9535840cu
