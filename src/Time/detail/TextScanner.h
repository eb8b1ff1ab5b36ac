#pragma once

#include <cstddef>
#include <string_view>

namespace vo::detail {

/// Takes fixed pieces off the front of a text; the first that is missing makes it invalid for good.
///
/// A view: the text must outlive it.
class TextScanner
{
public:
    explicit TextScanner(std::string_view text)
        : m_rest(text)
    {
    }

    /// A number of at least and at most so many digits.
    int number(std::size_t least, std::size_t most)
    {
        int value = 0;
        for (std::size_t count = 0; count < most && (count < least || isDigit()); ++count)
            value = value * 10 + digit();
        return value;
    }
    int number(std::size_t digits) { return number(digits, digits); } ///< A number of so many digits.

    /// A fraction of one to nine digits, as nanoseconds.
    int fraction()
    {
        int value = digit();
        int count = 1;
        for (; count < 9 && isDigit(); ++count)
            value = value * 10 + digit();
        for (; count < 9; ++count)
            value *= 10;
        return value;
    }

    /// The text must go on with that character.
    void expect(char c)
    {
        if (!accept(c))
            fail();
    }

    /// Whether the text goes on with that character, which is then taken.
    bool accept(char c)
    {
        if (m_rest.empty() || m_rest.front() != c)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    /// Whether the text goes on with that ASCII word in any case, which is then taken.
    bool acceptWord(std::string_view word)
    {
        if (m_rest.size() < word.size())
            return false;
        for (std::size_t i = 0; i < word.size(); ++i) {
            if ((m_rest[i] | 0x20) != (word[i] | 0x20))
                return false;
        }
        m_rest.remove_prefix(word.size());
        return true;
    }

    void fail() { m_isValid = false; }                                          ///< Makes the text invalid.
    bool isDigit() const { return !m_rest.empty() && isDigit(m_rest.front()); } ///< Whether a digit comes next.
    std::string_view rest() const { return m_rest; }                            ///< What was not taken yet.
    void skip(std::size_t count) { m_rest.remove_prefix(count); }               ///< Takes so many bytes of rest().
    bool isValid() const { return m_isValid; }                                  ///< Whether nothing was missing.
    bool isComplete() const { return m_isValid && m_rest.empty(); }             ///< Whether, besides, all was taken.

private:
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    int digit()
    {
        if (!isDigit()) {
            fail();
            return 0;
        }
        const int value = m_rest.front() - '0';
        m_rest.remove_prefix(1);
        return value;
    }

    std::string_view m_rest;
    bool m_isValid = true;
};

} // namespace vo::detail
