#pragma once

#include "vxsys/ThreadAnnotations.h" // IWYU pragma: export
