// Must not compile: PATTERN and its arguments do not belong together.
#include "vx/String.h"

vx::String text()
{
    return vx::String::formatted(PATTERN, 1, 2, 3);
}
