#pragma once

// What most tests of the library need: the core of the library, the outcome of a piece of work, and the parts of the
// standard library that tables of cases are made of.

#include "tests/Outcome.h"
#include "vx/Exceptions.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>
