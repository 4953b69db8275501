// What the library offers to other binaries.

#pragma once

// Marks a declaration as part of the binary interface. It must say so by itself: a caller
// that is compiled with hidden visibility would otherwise hide it, and fail to link.
#define INFOSYNC_EXPORT __attribute__((visibility("default")))

// Takes a member of such a class out of the binary interface again.
#define INFOSYNC_LOCAL __attribute__((visibility("hidden")))
