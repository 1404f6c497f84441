#pragma once

#include "vx/math/detail/Limbs.h"

#include <atomic>

// VX_ROW_PATHS: whether code for processors with two chains of carries (BMI2 and ADX) is compiled. It is used where the
// processor has them. The build option VX_VECTOR=OFF leaves it out, so that the other code is tested on the same machine.
#if defined(__x86_64__) && !defined(VX_NO_VECTOR)
#define VX_ROW_PATHS 1
#else
#define VX_ROW_PATHS 0
#endif

namespace vx::math::detail {

#if VX_ROW_PATHS

/// target[count] = left + right, and left - right. Return the carry and the borrow. Any processor has these two.
Limb addWords(Limb* target, const Limb* left, const Limb* right, Size count) noexcept;
Limb subtractWords(Limb* target, const Limb* left, const Limb* right, Size count) noexcept;

/// A fact about the processor, found once.
class Support {
public:
    explicit constexpr Support(bool (*find)() noexcept) noexcept
        : m_find(find)
    {
    }

    bool isThere() noexcept
    {
        int state = m_state.load(std::memory_order_relaxed);
        if (state == UNKNOWN) {
            state = m_find() ? YES : NO;
            m_state.store(state, std::memory_order_relaxed);
        }
        return state == YES;
    }

private:
    enum State : int { UNKNOWN, NO, YES };

    bool (*m_find)() noexcept;
    std::atomic<int> m_state {UNKNOWN};
};

/// Whether the processor has the others, so that they may be called.
bool hasRows() noexcept;

/// target[left + right] = left * right, of at least one word each.
void multiplyByRows(Limb* target, Natural left, Natural right) noexcept;
void squareByRows(Limb* target, Natural source) noexcept;
Limb subtractProductByRows(Limb* target, Natural source, Limb factor) noexcept;
Limb addMultipleByRows(Limb* product, Natural modulus, Limb negatedInverse) noexcept;

#endif

} // namespace vx::math::detail
