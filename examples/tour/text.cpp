// Text, values and errors.

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVariant.h>
#include <Core/VoVersion.h>

#include <iostream>

namespace {

void strings()
{
    //! [strings]
    const VoString part = "Resistor R12: 4.7 kOhm";
    std::cout << part.contains("RESISTOR") << ' '                          // case does not count ...
              << part.contains("RESISTOR", VoString::CaseSensitive) << ' ' // ... unless asked for
              << part.replaced("r12", "R13") << '\n';
    for (const VoStringView& word : part.tokenize(" ")) // views into the text: nothing is copied
        std::cout << '[' << word << ']';
    std::cout << '\n';
    //! [strings]
}

void numbers()
{
    //! [numbers]
    std::cout << VoString(42) << ' ' << VoString(2.5) << ' ' // always six decimals ...
              << VoString::ToString(2.5) << ' '              // ... or as many digits as it takes, up to six
              << VoString("2.5e3").toDouble() + 1 << '\n';   // whatever the locale says of commas
    //! [numbers]
}

void values()
{
    //! [values]
    VoDeque<VoVariant> values;
    values << VoVariant(true) << VoVariant(4.7) << VoVariant("R12");
    for (const VoVariant& value : values)
        std::cout << VoVariant::TypeString(value.type()) << ' ' << value << '\n';
    std::cout << values.at(1).asDouble() * 2 << '\n'; // asInteger() would throw: nothing is converted in passing
    //! [values]
}

void identity()
{
    //! [identity]
    const VoVersion installed(4, 2, 17, VoVersion::Release);
    const VoVersion offered = VoVersion::Deserialize("4.3.1.1"); // a beta: the third number is the kind of build
    std::cout << installed << (installed < offered ? " is older than " : " is newer than ") << offered << '\n';
    std::cout << (VoUUID(VoUUID::WithoutBraces) == VoUUID(VoUUID::WithoutBraces)) << '\n'; // each is new
    //! [identity]
}

void errors()
{
    //! [errors]
    const VoDeque<int> empty;
    try {
        std::cout << empty.at(3) << '\n';
    } catch (const VoIndexOutOfBoundsException& error) {
        std::cout << error.name() << ": " << error.message() << '\n';
    }
    try {
        throw VoInvalidCallException("Not now");
    } catch (...) {
        std::cout << vo::CurrentExceptionText() << '\n'; // whatever it was: for the outermost handler
    }
    //! [errors]
}

} // namespace

int main()
{
    strings();
    numbers();
    values();
    identity();
    errors();
}

/* Prints:
1 0 Resistor R13: 4.7 kOhm
[Resistor][R12:][4.7][kOhm]
42 2.500000 2.5 2501
Boolean true
Double 4.7
String R12
9.4
4.2.0.17 is older than 4.3.1.1
0
VoIndexOutOfBoundsException: Index out of bounds [3,0]
Not now
*/
