#include "vx/vorb/InterfaceData.h"

#include "vx/ComObject.h"
#include "vx/Result.h"

namespace vx::vorb {

namespace {

std::int32_t answer(IVXUnknown* view, void** out)
{
    if (view != nullptr)
        view->AddRef();
    *out = view;
    return RESULT_OK;
}

} // namespace

std::int32_t QueryInterfaceMap(const InterfaceData* map, ComObject* object, const _GUID& iid, void** out)
{
    if (out == nullptr)
        return RESULT_POINTER;
    if (iid == IVXUnknown::IID)
        return answer(object, out);

    for (const InterfaceData* row = map; row != nullptr && object != nullptr && row->func != nullptr; ++row) {
        if (row->iid != nullptr && !(*row->iid == iid))
            continue;
        if (row->func == displacementMarker()) // every interface begins with its root, so a view is a root as well
            return answer(reinterpret_cast<IVXUnknown*>(reinterpret_cast<char*>(object) + row->data), out);

        const std::int32_t result = row->func(object, iid, out, row->data);
        if (result == RESULT_OK)
            return result;
        if (failed(result) && row->iid != nullptr)
            return result;
    }
    *out = nullptr;
    return RESULT_NO_INTERFACE;
}

} // namespace vx::vorb
