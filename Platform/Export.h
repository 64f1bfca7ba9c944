#pragma once

/// Marks what the shared Platform library shows to the host, the plug-in and the back ends; all else is hidden.
#define PLATFORM_EXPORT __attribute__((visibility("default")))
