#include <Core/detail/CaseFold.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <mutex>
#include <new>
#include <type_traits>
#include <vector>

namespace vo::detail {
namespace {

constexpr unsigned char CaseBit = 0x20;
constexpr std::size_t BlockSize = 32;
constexpr std::size_t WordSize = sizeof(std::uint64_t);

constexpr unsigned char FoldAscii(unsigned char c)
{
    return static_cast<unsigned char>(c - 'A') < 26 ? static_cast<unsigned char>(c | CaseBit) : c;
}

std::uint64_t LoadWord(const char* bytes)
{
    std::uint64_t word;
    std::memcpy(&word, bytes, WordSize);
    return word;
}

// FoldAscii of the eight bytes of a word at once: the sums carry into a byte's top bit when its lower seven bits reach
// 'A' and when they pass 'Z'.
std::uint64_t FoldAsciiWord(std::uint64_t word)
{
    constexpr std::uint64_t ones = 0x0101010101010101u;
    constexpr std::uint64_t topBits = ones * 0x80u;
    const std::uint64_t low = word & ~topBits;
    const std::uint64_t reachesA = low + ones * (0x80u - 'A');
    const std::uint64_t passesZ = low + ones * (0x7fu - 'Z');
    const std::uint64_t upper = (reachesA ^ passesZ) & ~word & topBits;
    return word | (upper >> 2);
}

// One loop without branches, which compilers turn into vector instructions.
bool BlocksDifferFoldedAscii(const char* a, const char* b)
{
    unsigned char difference = 0;
    for (std::size_t i = 0; i < BlockSize; ++i) {
        const unsigned char foldedA = FoldAscii(static_cast<unsigned char>(a[i]));
        const unsigned char foldedB = FoldAscii(static_cast<unsigned char>(b[i]));
        difference = static_cast<unsigned char>(difference | (foldedA ^ foldedB));
    }
    return difference != 0;
}

bool WordsEqualFoldedAscii(const char* a, const char* b)
{
    return FoldAsciiWord(LoadWord(a)) == FoldAsciiWord(LoadWord(b));
}

// The beginning, in whole strides, that is the same in every mode.
std::size_t SkipIdentical(const char* a, const char* b, std::size_t length)
{
    constexpr std::size_t stride = 64;
    std::size_t i = 0;
    while (i + stride <= length && std::memcmp(a + i, b + i, stride) == 0)
        i += stride;
    return i;
}

std::size_t MismatchFoldedAscii(const char* a, const char* b, std::size_t length, const LocaleRecord& locale)
{
    std::size_t i = SkipIdentical(a, b, length);
    while (i + BlockSize <= length && !BlocksDifferFoldedAscii(a + i, b + i))
        i += BlockSize;
    while (i + WordSize <= length && WordsEqualFoldedAscii(a + i, b + i))
        i += WordSize;
    // The last word overlaps what is known to be equal.
    if (i + WordSize > length && length >= WordSize &&
        WordsEqualFoldedAscii(a + length - WordSize, b + length - WordSize))
        return length;
    while (i < length && locale.folded(a[i]) == locale.folded(b[i]))
        ++i;
    return i;
}

std::size_t MismatchFoldedByTable(const char* a, const char* b, std::size_t length, const LocaleRecord& locale)
{
    std::size_t i = 0;
    while (i < length) {
        if (i + WordSize <= length && LoadWord(a + i) == LoadWord(b + i)) {
            i += WordSize;
            continue;
        }
        const std::size_t end = std::min(i + WordSize, length);
        for (; i < end; ++i)
            if (locale.folded(a[i]) != locale.folded(b[i]))
                return i;
    }
    return length;
}

// One byte of a needle, found in either case when `mask` is the case bit.
struct BytePattern
{
    unsigned char mask = 0;
    unsigned char value = 0;

    static BytePattern Exact(char c) { return {0, static_cast<unsigned char>(c)}; }
    static BytePattern FoldedAscii(char c)
    {
        const unsigned char folded = FoldAscii(static_cast<unsigned char>(c));
        const bool isLetter = static_cast<unsigned char>(folded - 'a') < 26;
        return {isLetter ? CaseBit : static_cast<unsigned char>(0), folded};
    }
    bool matches(char c) const { return (static_cast<unsigned char>(c) | mask) == value; }
};

// Whether any of a block of positions has both the first and the last byte of a needle in its place.
bool BlockHasCandidate(const char* firsts, BytePattern first, const char* lasts, BytePattern last)
{
    unsigned char found = 0;
    for (std::size_t i = 0; i < BlockSize; ++i) {
        const auto firstFits = static_cast<unsigned char>(first.matches(firsts[i]));
        const auto lastFits = static_cast<unsigned char>(last.matches(lasts[i]));
        found = static_cast<unsigned char>(found | (firstFits & lastFits));
    }
    return found != 0;
}

// Finds the positions where the first and the last byte of the needle fit, and asks `matchesAt` there.
template <typename MatchesAt>
std::size_t FindByFirstAndLast(std::string_view text, std::size_t needleLength, std::size_t from, BytePattern first,
                               BytePattern last, MatchesAt matchesAt)
{
    if (from > text.size() || text.size() - from < needleLength)
        return std::string_view::npos;
    const char* const firsts = text.data();
    const char* const lasts = text.data() + needleLength - 1;
    const std::size_t end = text.size() - needleLength + 1;
    std::size_t i = from;
    while (i < end) {
        const std::size_t blockEnd = std::min(i + BlockSize, end);
        // The last block overlaps the one before.
        const std::size_t block = std::min(i, end < from + BlockSize ? end : end - BlockSize);
        if (end >= from + BlockSize && !BlockHasCandidate(firsts + block, first, lasts + block, last)) {
            i = blockEnd;
            continue;
        }
        for (; i < blockEnd; ++i)
            if (first.matches(firsts[i]) && last.matches(lasts[i]) && matchesAt(firsts + i))
                return i;
    }
    return std::string_view::npos;
}

std::size_t FindByte(std::string_view text, char c, std::size_t from)
{
    if (from >= text.size())
        return std::string_view::npos;
    const void* found = std::memchr(text.data() + from, static_cast<unsigned char>(c), text.size() - from);
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) : std::string_view::npos;
}

std::size_t FindFoldedByTable(std::string_view text, std::string_view needle, std::size_t from,
                              const LocaleRecord& locale)
{
    if (from > text.size() || text.size() - from < needle.size())
        return std::string_view::npos;
    const unsigned char first = locale.folded(needle.front());
    const std::size_t end = text.size() - needle.size() + 1;
    for (std::size_t i = from; i < end; ++i)
        if (locale.folded(text[i]) == first &&
            MismatchFoldedByTable(text.data() + i, needle.data(), needle.size(), locale) == needle.size())
            return i;
    return std::string_view::npos;
}

// Storage with a fixed address, so that the record, which is never destroyed, is recognised without asking whether it
// was made.
alignas(LocaleRecord) unsigned char classicStorage[sizeof(LocaleRecord)];

const LocaleRecord& ClassicRecord()
{
    static const LocaleRecord* const record = ::new (classicStorage) LocaleRecord(std::locale::classic());
    return *record;
}

bool IsClassicRecordsLocale(const std::locale& locale)
{
    const auto* const address = reinterpret_cast<const unsigned char*>(&locale);
    return std::less_equal<>()(+classicStorage, address) &&
           std::less<>()(address, classicStorage + sizeof(LocaleRecord));
}

LocalePtr Uncounted(const LocaleRecord& record)
{
    return LocalePtr(LocalePtr(), &record);
}

// The records of the process. The first locales stay for good, so that threads can remember them by bare pointers and
// nothing of this has to be destroyed; a process that makes locales without end gets counted records for the others.
class LocaleRegistry
{
public:
    static LocaleRegistry& Get()
    {
        static LocaleRegistry& registry = *new LocaleRegistry;
        return registry;
    }

    LocalePtr recordOf(const std::locale& locale)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const LocaleRecord* record : m_lasting)
            if (record->locale == locale)
                return Uncounted(*record);
        if (m_lasting.size() < MostLasting) {
            m_lasting.push_back(new LocaleRecord(locale));
            return Uncounted(*m_lasting.back());
        }
        return countedRecordOf(locale);
    }

    static bool IsLasting(const LocalePtr& record) { return record.use_count() == 0; }

private:
    static constexpr std::size_t MostLasting = 64;

    LocaleRegistry() { m_lasting.reserve(MostLasting); }

    LocalePtr countedRecordOf(const std::locale& locale)
    {
        LocalePtr record;
        const auto isGoneOrFound = [&](const std::weak_ptr<const LocaleRecord>& entry) {
            const LocalePtr candidate = entry.lock();
            if (candidate && !record && candidate->locale == locale)
                record = candidate;
            return !candidate;
        };
        m_counted.erase(std::remove_if(m_counted.begin(), m_counted.end(), isGoneOrFound), m_counted.end());
        if (record)
            return record;
        record = std::make_shared<const LocaleRecord>(locale);
        m_counted.push_back(record);
        return record;
    }

    std::mutex m_mutex;
    std::vector<const LocaleRecord*> m_lasting;
    std::vector<std::weak_ptr<const LocaleRecord>> m_counted;
};

// The locales that a thread met lately. Without a destructor: strings are also made while a thread's variables are
// being destroyed, and after that.
class RecentLocales
{
public:
    const LocaleRecord* find(const std::locale& locale) const
    {
        for (const LocaleRecord* record : m_records)
            if (record && &record->locale == &locale)
                return record;
        for (const LocaleRecord* record : m_records)
            if (record && record->locale == locale)
                return record;
        return nullptr;
    }

    void remember(const LocaleRecord& record)
    {
        m_records[m_next] = &record;
        m_next = (m_next + 1) % m_records.size();
    }

private:
    std::array<const LocaleRecord*, 4> m_records{};
    std::size_t m_next = 0;
};
static_assert(std::is_trivially_destructible_v<RecentLocales>);

std::uint64_t Mix(std::uint64_t hash, std::uint64_t word)
{
    hash = (hash ^ word) * 0x9e3779b97f4a7c15u;
    return hash ^ (hash >> 32);
}

void FoldBytes(const char* from, std::size_t length, const LocaleRecord& locale, unsigned char* to)
{
    if (locale.foldsOnlyAscii) {
        for (std::size_t i = 0; i < length; ++i)
            to[i] = FoldAscii(static_cast<unsigned char>(from[i]));
        return;
    }
    for (std::size_t i = 0; i < length; ++i)
        to[i] = locale.folded(from[i]);
}

} // namespace

LocaleRecord::LocaleRecord(const std::locale& source)
    : locale(source)
{
    const auto& facet = std::use_facet<std::ctype<char>>(source);
    for (unsigned i = 0; i < 256; ++i) {
        const char c = static_cast<char>(static_cast<unsigned char>(i));
        fold[i] = static_cast<unsigned char>(facet.tolower(c));
        space[i] = facet.is(static_cast<std::ctype_base::mask>(std::ctype_base::space | std::ctype_base::blank), c);
        upper[i] = facet.is(std::ctype_base::upper, c);
        foldsOnlyAscii = foldsOnlyAscii && fold[i] == FoldAscii(static_cast<unsigned char>(i));
    }
}

LocalePtr ClassicLocale()
{
    return Uncounted(ClassicRecord());
}

LocalePtr GlobalLocale()
{
    return RecordOf(std::locale());
}

LocalePtr RecordOf(const std::locale& locale)
{
    if (IsClassicRecordsLocale(locale))
        return Uncounted(*std::launder(reinterpret_cast<const LocaleRecord*>(classicStorage)));
    const LocaleRecord& classic = ClassicRecord();
    if (locale == classic.locale)
        return Uncounted(classic);
    thread_local RecentLocales recent;
    if (const LocaleRecord* record = recent.find(locale))
        return Uncounted(*record);
    LocalePtr record = LocaleRegistry::Get().recordOf(locale);
    if (LocaleRegistry::IsLasting(record))
        recent.remember(*record);
    return record;
}

std::size_t MismatchExact(const char* a, const char* b, std::size_t length)
{
    std::size_t i = SkipIdentical(a, b, length);
    while (i + WordSize <= length && LoadWord(a + i) == LoadWord(b + i))
        i += WordSize;
    while (i < length && a[i] == b[i])
        ++i;
    return i;
}

std::size_t MismatchFolded(const char* a, const char* b, std::size_t length, const LocaleRecord& locale)
{
    return locale.foldsOnlyAscii ? MismatchFoldedAscii(a, b, length, locale)
                                 : MismatchFoldedByTable(a, b, length, locale);
}

int Compare(std::string_view a, std::string_view b, bool exact, const LocaleRecord& locale)
{
    const std::size_t common = std::min(a.size(), b.size());
    const std::size_t at =
        exact ? MismatchExact(a.data(), b.data(), common) : MismatchFolded(a.data(), b.data(), common, locale);
    if (at == common)
        return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
    const auto value = [&](char c) {
        return static_cast<signed char>(exact ? c : static_cast<char>(locale.folded(c)));
    };
    return value(a[at]) - value(b[at]);
}

std::size_t FindExact(std::string_view text, std::string_view needle, std::size_t from)
{
    if (needle.size() == 1)
        return FindByte(text, needle.front(), from);
    const auto matchesAt = [&](const char* at) { return std::memcmp(at, needle.data(), needle.size()) == 0; };
    return FindByFirstAndLast(text, needle.size(), from, BytePattern::Exact(needle.front()),
                              BytePattern::Exact(needle.back()), matchesAt);
}

std::size_t FindFolded(std::string_view text, std::string_view needle, std::size_t from, const LocaleRecord& locale)
{
    if (!locale.foldsOnlyAscii)
        return FindFoldedByTable(text, needle, from, locale);
    const BytePattern first = BytePattern::FoldedAscii(needle.front());
    if (needle.size() == 1 && first.mask == 0)
        return FindByte(text, needle.front(), from);
    const auto matchesAt = [&](const char* at) {
        return MismatchFoldedAscii(at, needle.data(), needle.size(), locale) == needle.size();
    };
    return FindByFirstAndLast(text, needle.size(), from, first, BytePattern::FoldedAscii(needle.back()), matchesAt);
}

std::size_t HashFolded(std::string_view text, const LocaleRecord& locale)
{
    constexpr std::size_t chunkSize = 8 * WordSize;
    std::uint64_t hash = Mix(0, text.size());
    while (!text.empty()) {
        const std::size_t length = std::min(text.size(), chunkSize);
        unsigned char folded[chunkSize] = {};
        FoldBytes(text.data(), length, locale, folded);
        for (std::size_t i = 0; i < length; i += WordSize)
            hash = Mix(hash, LoadWord(reinterpret_cast<const char*>(folded) + i));
        text.remove_prefix(length);
    }
    return static_cast<std::size_t>(hash);
}

std::string_view Trimmed(std::string_view text, const LocaleRecord& locale)
{
    while (!text.empty() && locale.isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && locale.isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace vo::detail
