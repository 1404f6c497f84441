#include "vx/Str1HashMap.h"

namespace vx {

template class Str1HashMap<Reference<ComObject>>;
template class Str1HashMap<Str1>;
template class Str1HashMap<void*>;
template class Str1HashMapLC<Reference<ComObject>>;
template class Str1HashMapLC<Str1>;

} // namespace vx
