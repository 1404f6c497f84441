#include "legacy/CVXCollections.h"

#include "vx/collections/DefaultComparator.h"

CVXSmartPtr<IVXComparator> CVXCollections::getDefaultComparator()
{
    return vx::collections::GetDefaultComparator();
}
