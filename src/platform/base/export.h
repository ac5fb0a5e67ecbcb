// Marks what libqvn_platform.so offers to the library, the plug-ins and the tools.
#pragma once

#define QVN_PLATFORM_API __attribute__((visibility("default")))
