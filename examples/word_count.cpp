/// Counts the words of a text in UTF-8, and computes with the counts, exactly and however long the numbers become:
/// word_count FILE [ROWS]

#include <vx/vxlib4.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <vector>

using namespace vx;
using math::BigDecimal;
using math::BigInteger;

namespace {

constexpr char16_t BETWEEN_WORDS[] = u" \t\u00A0\u200B.,:;!?\"()[]{}<>/\\|*+=~_#%&^$@-"
                                     u"–—―…·•«»‹›“”„‘‚¡¿§¶†‡‰№€£¥½¼¾²√≈∀∈≥←↑→↓♠♥♦♣"
                                     u"।،؟؛۔、。，：；！？「」『』（）";
constexpr char16_t APOSTROPHES[] = u"'’"; // part of a word, but not at its ends

/// How often a word stands in the text. Maps hold objects by counted references, and any class of yours may be one.
class Tally : public Object {
public:
    int count = 0;
};

using Words = collections::Map<String, Tally>; // gives the wrapped map static types

/// Counts the words of one line, and gives their number.
int countLine(const String& line, Words& words)
{
    int found = 0;
    for (int start = 0; (start = line.findFirstNotOf(BETWEEN_WORDS, -1, start)) >= 0;) {
        int end = line.findFirstOf(BETWEEN_WORDS, -1, start);
        if (end < 0)
            end = line.getLength();

        const Reference<String> word(new String(line.substring(start, end)));
        start = end;
        word->trim(APOSTROPHES);
        if (word->getLength() == 0)
            continue;
        word->toLower();
        Reference<Tally> tally = words.get(word.get());
        if (tally == nullptr) {
            tally = new Tally;
            words.put(word.get(), tally.get());
        }
        ++tally->count;
        ++found;
    }
    return found;
}

/// A map walks its entries by hash; here they come by count, the most frequent first.
std::vector<Words::Entry> sortByCount(const Words& words)
{
    std::vector<Words::Entry> sorted;
    for (const Words::Entry& entry : words)
        sorted.push_back(entry);
    std::sort(sorted.begin(), sorted.end(), [](const Words::Entry& left, const Words::Entry& right) {
        return left.value->count != right.value->count ? left.value->count > right.value->count
                                                       : left.key->compare(*right.key) < 0;
    });
    return sorted;
}

String rightAligned(const String& text, int width)
{
    return String(u' ', std::max(width - text.getLength(), 0)) + text;
}

/// `part` of `whole` in percent, with ten digits after the point.
String percent(const BigInteger& part, const BigInteger& whole)
{
    BigDecimal share(part, 0);
    share.multiply(BigDecimal(100)); // big numbers change in place
    share.divide(BigDecimal(whole, 0), 10);
    return share.toString();
}

/// The chance that two words, drawn from the text one after the other, are the same: a fraction in lowest terms.
void printChanceOfPair(const std::vector<Words::Entry>& words, int total)
{
    BigInteger pairs;
    for (const Words::Entry& entry : words) {
        BigInteger ordered(entry.value->count);
        ordered.multiply(BigInteger(entry.value->count - 1));
        pairs.add(ordered);
    }
    BigInteger all(total);
    all.multiply(BigInteger(total - 1));
    if (all.isZero())
        return;

    const String inPercent = percent(pairs, all);
    BigInteger divisor(pairs);
    divisor.gcd(all);
    BigInteger remainder;
    pairs.divide(divisor, remainder);
    all.divide(divisor, remainder);
    std::cout << "Two words drawn at random are the same in " << pairs.toString() << " of " << all.toString()
              << " cases (" << inPercent << " %).\n";
}

/// In how many orders the words can stand: the factorial of their number, divided by that of each word's count.
void printOrders(const std::vector<Words::Entry>& words)
{
    BigInteger orders(1);
    int placed = 0;
    for (const Words::Entry& entry : words) {
        for (int i = 1; i <= entry.value->count; ++i) {
            BigInteger remainder;
            orders.multiply(BigInteger(++placed));
            orders.divide(BigInteger(i), remainder); // never leaves one
        }
    }
    const String digits = orders.toString();
    std::cout << "They can stand in this many orders (" << digits.getLength() << " digits):\n";
    constexpr int DIGITS_A_LINE = 100;
    for (int i = 0; i < digits.getLength(); i += DIGITS_A_LINE)
        std::cout << "  " << digits.substring(i, std::min(i + DIGITS_A_LINE, digits.getLength())) << '\n';
}

void run(const String& path, std::size_t rows)
{
    const Reference<io::BufferedReader> in(
        new io::BufferedReader(new io::InputStreamReader(new io::FileInputStream(path), u"UTF-8", 4096), 4096));
    Words words(new collections::vorb::HashMap);
    int total = 0;
    for (String line; in->readLine(line) >= 0;)
        total += countLine(line, words);

    const std::vector<Words::Entry> sorted = sortByCount(words);
    std::cout << total << " words, " << words.getSize() << " different ones\n";
    for (std::size_t i = 0; i < std::min(rows, sorted.size()); ++i) {
        const auto& [word, tally] = sorted[i];
        std::cout << rightAligned(String::valueOf(tally->count), 7)
                  << rightAligned(percent(BigInteger(tally->count), BigInteger(total)), 16) << " %  " << *word << '\n';
    }
    printChanceOfPair(sorted, total);
    printOrders(sorted);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2 && argc != 3) {
        std::cerr << "usage: word_count FILE [ROWS]\n";
        return 2;
    }
    try {
        run(String(std::string_view(argv[1])), argc == 3 ? std::strtoul(argv[2], nullptr, 10) : 10);
        return 0;
    } catch (const Exception& failure) {
        std::cerr << "word_count: " << explain(failure) << '\n';
        return 1;
    }
}
