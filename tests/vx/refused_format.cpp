// Must not compile: a struct has no text.
#include "vx/String.h"

struct Point {
    int x;
};

vx::String textOf(Point point)
{
    return vx::String().format(u"{0}", -1, point);
}
