// Control codes of the test's Process Monitor device: that of the module, and those that read what the device
// got.
#pragma once

#define PROCMON_DEVICE_LOG 0x95358204u
// Returns the oldest unread line; fails without one.
#define PROCMON_DEVICE_READ 0x95358400u
// Makes the next line fail.
#define PROCMON_DEVICE_FAIL_NEXT 0x95358404u
// Returns the number of open handles, a 32-bit value.
#define PROCMON_DEVICE_HANDLES 0x95358408u
// Returns the number of lines that were sent, including failed ones, a 32-bit value.
#define PROCMON_DEVICE_LINES 0x9535840cu
