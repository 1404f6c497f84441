#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/collections/Set.h"
#include "vx/log/vorb/IFieldIterator.h"

namespace vx::log::detail {

/// The names of an entry's fields as they were when it was made.
class FieldIterator final : public Object, public vorb::IFieldIterator {
public:
    explicit FieldIterator(const collections::Set<String>& names);

    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();
    ~FieldIterator() noexcept override;

    // IFieldIterator
    std::int32_t HasNext() override;
    std::int32_t Next(IVXCharBuffer* out) override;

private:
    Reference<collections::ConstIterator<String>> m_names;
};

} // namespace vx::log::detail
