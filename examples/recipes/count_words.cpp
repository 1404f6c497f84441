// Count words
//
// A map of plain values needs no objects of your own. The words are printed in the order of how often they occur.
#include <vx/vxlib4.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

using namespace vx;

int main()
{
    collections::ValueMap<std::u16string, int> counts;
    const String text(u"the cat and the dog and the bird");
    util::StringTokenizer words(text, u" ");
    while (words.hasMoreTokens()) {
        const std::u16string word(words.nextToken().view());
        counts.put(word, counts.get(word).value_or(0) + 1);
    }

    std::vector<std::pair<int, std::u16string>> sorted;
    counts.forEach([&](const std::u16string& word, int count) { sorted.emplace_back(-count, word); });
    std::ranges::sort(sorted);
    for (const auto& [count, word] : sorted)
        std::cout << String(word) << ' ' << -count << '\n';
}
// Prints:
// the 3
// and 2
// bird 1
// cat 1
// dog 1
