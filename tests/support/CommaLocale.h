#pragma once

#include <clocale>
#include <locale>
#include <string>

namespace vo::test {

/// While it lives streams write 1000.5 as 1.000,5, and so does the C library where the machine has a locale like that.
class CommaLocale
{
public:
    CommaLocale() { std::setlocale(LC_ALL, "de_DE.UTF-8"); }
    ~CommaLocale()
    {
        std::locale::global(m_old);
        std::setlocale(LC_ALL, m_oldName.c_str());
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    struct Numbers : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    const std::string m_oldName = std::setlocale(LC_ALL, nullptr);
    const std::locale m_old = std::locale::global(std::locale(std::locale::classic(), new Numbers));
};

} // namespace vo::test
