#pragma once

/// Marks what a shared library of the platform shows; everything else is hidden.
#define GENICAM_API __attribute__((visibility("default")))
