#pragma once

/// Marks what the shared library exports; everything else stays hidden.
#define HY_API __attribute__((visibility("default")))
