#include "vx/math/detail/LimbsRow.h"

#if VX_ROW_PATHS

#include <algorithm>
#include <cpuid.h>

namespace vx::math::detail {

// NOLINTBEGIN(readability-non-const-parameter): the assembler texts write to `target`
namespace {

bool findRows() noexcept
{
    unsigned int a = 0;
    unsigned int b = 0;
    unsigned int c = 0;
    unsigned int d = 0;
    constexpr unsigned int NEEDED = bit_BMI2 | bit_ADX;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & NEEDED) == NEEDED;
}

constinit Support g_rows {findRows};

#define VX_FOR_ROWS __attribute__((target("adx,bmi2")))

// One step for the word at `OFFSET`: the low half of the product, the carry of the step before and the word of the target
// are added in two chains, one in each flag. The high half is the carry of the next step.
#define VX_ADD_STEP(OFFSET, CARRY, NEXT)                                                                               \
    "mulx " OFFSET "(%[source]), %[low], %[" NEXT "]\n\t"                                                              \
    "adcx %[" CARRY "], %[low]\n\t"                                                                                    \
    "adox " OFFSET "(%[target]), %[low]\n\t"                                                                           \
    "mov %[low], " OFFSET "(%[target])\n\t"

// t - p is ~(~t + p).
#define VX_SUBTRACT_STEP(OFFSET, CARRY, NEXT)                                                                          \
    "mulx " OFFSET "(%[source]), %[low], %[" NEXT "]\n\t"                                                              \
    "adcx %[" CARRY "], %[low]\n\t"                                                                                    \
    "mov " OFFSET "(%[target]), %[word]\n\t"                                                                           \
    "not %[word]\n\t"                                                                                                  \
    "adox %[word], %[low]\n\t"                                                                                         \
    "not %[low]\n\t"                                                                                                   \
    "mov %[low], " OFFSET "(%[target])\n\t"

// First the words that do not fill a block of eight, then the blocks. The loops count without a change of the flags,
// and their ends are jumps over a short distance.
#define VX_ROW(STEP)                                                                                                   \
    "xor %k[low], %k[low]\n\t"                                                                                         \
    "jrcxz 2f\n"                                                                                                       \
    "1:\n\t" STEP("", "carry", "up") "mov %[up], %[carry]\n\t"                                                         \
                                     "lea 8(%[source]), %[source]\n\t"                                                 \
                                     "lea 8(%[target]), %[target]\n\t"                                                 \
                                     "lea -1(%%rcx), %%rcx\n\t"                                                        \
                                     "jrcxz 2f\n\t"                                                                    \
                                     "jmp 1b\n"                                                                        \
                                     "2:\n\t"                                                                          \
                                     "mov %[blocks], %%rcx\n\t"                                                        \
                                     "jrcxz 3f\n\t"                                                                    \
                                     "jmp 4f\n"                                                                        \
                                     "3:\n\t"                                                                          \
                                     "jmp 5f\n\t"                                                                      \
                                     ".p2align 4\n"                                                                    \
                                     "4:\n\t" STEP("", "carry", "up") STEP("8", "up", "carry")                         \
                                         STEP("16", "carry", "up") STEP("24", "up", "carry") STEP("32", "carry", "up") \
                                             STEP("40", "up", "carry") STEP("48", "carry", "up")                       \
                                                 STEP("56", "up", "carry") "lea 64(%[source]), %[source]\n\t"          \
                                                                           "lea 64(%[target]), %[target]\n\t"          \
                                                                           "lea -1(%%rcx), %%rcx\n\t"                  \
                                                                           "jrcxz 5f\n\t"                              \
                                                                           "jmp 4b\n"                                  \
                                                                           "5:\n\t"                                    \
                                                                           "mov $0, %k[low]\n\t"                       \
                                                                           "adcx %[low], %[carry]\n\t"                 \
                                                                           "adox %[low], %[carry]\n\t"

/// target += source * factor. Returns the word above.
VX_FOR_ROWS inline Limb addRow(Limb* target, Natural source, Limb factor) noexcept
{
    constexpr Size BLOCK = 8;
    const Limb* words = source.data();
    Size count = source.size() % BLOCK;
    Limb carry = 0;
    Limb low = 0;
    Limb up = 0;
    asm volatile(VX_ROW(VX_ADD_STEP)
                 : [target] "+r"(target), [source] "+r"(words), [carry] "+r"(carry), [low] "=&r"(low), [up] "=&r"(up),
                 "+c"(count)
                 : [blocks] "r"(source.size() / BLOCK), "d"(factor)
                 : "cc", "memory");
    return carry;
}

} // namespace

// First the words that do not fill a block of four, then the blocks. Nothing between changes the carry.
#define VX_SUM(OPERATION)                                                                                              \
    "clc\n\t"                                                                                                          \
    "jrcxz 2f\n"                                                                                                       \
    "1:\n\t" VX_SUM_STEP(OPERATION, "") "lea 8(%[left]), %[left]\n\t"                                                  \
                                        "lea 8(%[right]), %[right]\n\t"                                                \
                                        "lea 8(%[target]), %[target]\n\t"                                              \
                                        "dec %%rcx\n\t"                                                                \
                                        "jnz 1b\n"                                                                     \
                                        "2:\n\t"                                                                       \
                                        "mov %[blocks], %%rcx\n\t"                                                     \
                                        "jrcxz 4f\n\t"                                                                 \
                                        ".p2align 4\n"                                                                 \
                                        "3:\n\t" VX_SUM_STEP(OPERATION, "") VX_SUM_STEP(OPERATION, "8")                \
                                            VX_SUM_STEP(OPERATION, "16")                                               \
                                                VX_SUM_STEP(OPERATION, "24") "lea 32(%[left]), %[left]\n\t"            \
                                                                             "lea 32(%[right]), %[right]\n\t"          \
                                                                             "lea 32(%[target]), %[target]\n\t"        \
                                                                             "dec %%rcx\n\t"                           \
                                                                             "jnz 3b\n"                                \
                                                                             "4:\n\t"                                  \
                                                                             "setc %b[word]\n\t"                       \
                                                                             "movzbl %b[word], %k[word]\n\t"

#define VX_SUM_STEP(OPERATION, OFFSET)                                                                                 \
    "mov " OFFSET "(%[left]), %[word]\n\t" OPERATION " " OFFSET "(%[right]), %[word]\n\t"                              \
    "mov %[word], " OFFSET "(%[target])\n\t"

#define VX_SUM_FUNCTION(OPERATION)                                                                                     \
    constexpr Size BLOCK = 4;                                                                                          \
    const Size blocks = count / BLOCK;                                                                                 \
    count %= BLOCK;                                                                                                    \
    Limb word = 0;                                                                                                     \
    asm volatile(VX_SUM(OPERATION)                                                                                     \
                 : [target] "+r"(target), [left] "+r"(left), [right] "+r"(right), [word] "=&q"(word), "+c"(count)      \
                 : [blocks] "r"(blocks)                                                                                \
                 : "cc", "memory");                                                                                    \
    return word

Limb addWords(Limb* target, const Limb* left, const Limb* right, Size count) noexcept
{
    VX_SUM_FUNCTION("adc");
}

Limb subtractWords(Limb* target, const Limb* left, const Limb* right, Size count) noexcept
{
    VX_SUM_FUNCTION("sbb");
}

bool hasRows() noexcept
{
    return g_rows.isThere();
}

VX_FOR_ROWS void multiplyByRows(Limb* target, Natural left, Natural right) noexcept
{
    std::fill_n(target, left.size(), 0);
    for (const Limb factor : right) {
        target[left.size()] = addRow(target, left, factor);
        ++target;
    }
}

/// Adds the products of different words once, then doubles them and adds the squares of the words.
VX_FOR_ROWS void squareByRows(Limb* target, Natural source) noexcept
{
    const Size count = source.size();
    std::fill_n(target, count + 1, 0);
    for (Size place = 0; place + 1 < count; ++place)
        target[place + count] = addRow(target + 2 * place + 1, source.subspan(place + 1), source[place]);
    target[2 * count - 1] = 0;
    Limb above = 0; // the top bit of the word before
    Limb carry = 0;
    for (Size place = 0; place < count; ++place) {
        const Wide square = static_cast<Wide>(source[place]) * source[place];
        const Wide pair = wide(target[2 * place + 1], target[2 * place]);
        const Wide doubled = pair << 1 | above;
        above = high(pair) >> (LIMB_BITS - 1);
        const Wide sum = doubled + square;
        const Wide all = sum + carry;
        carry = (sum < doubled) + (all < sum);
        target[2 * place] = static_cast<Limb>(all);
        target[2 * place + 1] = high(all);
    }
}

VX_FOR_ROWS Limb subtractProductByRows(Limb* target, Natural source, Limb factor) noexcept
{
    constexpr Size BLOCK = 8;
    const Limb* words = source.data();
    Size count = source.size() % BLOCK;
    Limb carry = 0;
    Limb low = 0;
    Limb up = 0;
    Limb word = 0;
    asm volatile(VX_ROW(VX_SUBTRACT_STEP)
                 : [target] "+r"(target), [source] "+r"(words), [carry] "+r"(carry), [low] "=&r"(low), [up] "=&r"(up),
                 [word] "=&r"(word), "+c"(count)
                 : [blocks] "r"(source.size() / BLOCK), "d"(factor)
                 : "cc", "memory");
    return carry;
}

VX_FOR_ROWS Limb addMultipleByRows(Limb* product, Natural modulus, Limb negatedInverse) noexcept
{
    const Size size = modulus.size();
    for (Size place = 0; place < size; ++place) // the word that becomes 0 holds the carry until the end
        product[place] = addRow(product + place, modulus, product[place] * negatedInverse);
    return add(product + size, {product + size, size}, {product, size});
}

// NOLINTEND(readability-non-const-parameter)
} // namespace vx::math::detail

#endif
