// What the printers need to know. There is no code here: gdb would believe that it is at address 0.
#include "vx/vxlib4.h"
#include "vxsys/detail/Handle.h"

using namespace vx::collections;

extern template class vx::collections::detail::HashTable<StringHashMap::Item, StringHashMap::KeyOrder>;
extern template class vx::collections::detail::HashTable<vx::Reference<vx::Object>, IntegerHashMap::KeyOrder>;
