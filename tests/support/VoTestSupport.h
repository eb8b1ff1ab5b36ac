#pragma once

#include <gtest/gtest.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>

#include <string>
#include <typeinfo>

/// @file
/// What every test program includes: GoogleTest and the matcher for the library's exceptions, which GoogleTest cannot
/// print by itself because they are not standard exceptions.

namespace vo::test {

/// The name that an exception class must report: its own, but for the four that report a phrase.
template <typename Exception>
std::string ExpectedName(const char* className)
{
    const std::string text = className;
    if (text == "VoBufferException")
        return "Buffer exception";
    if (text == "VoBufferOverflowException")
        return "Buffer overflow exception";
    if (text == "VoBufferUnderflowException")
        return "Buffer underflow exception";
    if (text == "VoValidationException")
        return "Validation exception";
    const std::size_t scope = text.rfind("::");
    return scope == std::string::npos ? text : text.substr(scope + 2);
}

/// Runs `action` and tells whether it throws exactly an `Exception` with the message `message`.
template <typename Exception, typename Action>
testing::AssertionResult Throws(Action&& action, const char* className, const VoString& message)
{
    try {
        action();
    } catch (const Exception& e) {
        if (typeid(e) != typeid(Exception))
            return testing::AssertionFailure()
                   << "expected exactly " << className << ", but got its subclass " << e.name() << ": " << e.what();
        if (e.message().toStdString() != message.toStdString())
            return testing::AssertionFailure() << className << " has the message \"" << e.message().toStdString()
                                               << "\", expected \"" << message.toStdString() << '"';
        if (e.name() != ExpectedName<Exception>(className))
            return testing::AssertionFailure() << className << " is called \"" << e.name() << '"';
        return testing::AssertionSuccess();
    } catch (const VoExceptionInterface& e) {
        return testing::AssertionFailure() << "expected " << className << ", but got " << e.name() << ": " << e.what();
    } catch (...) {
        return testing::AssertionFailure()
               << "expected " << className
               << ", but got a foreign exception: " << vo::CurrentExceptionText().toStdString();
    }
    return testing::AssertionFailure() << "expected " << className << " \"" << message.toStdString()
                                       << "\", but nothing was thrown";
}

} // namespace vo::test

/// Expects that `statement` throws exactly an `Exception` whose name() is its class name and whose message is @p
/// message.
#define EXPECT_THROW_MSG(statement, Exception, message)                                                                \
    EXPECT_TRUE((::vo::test::Throws<Exception>([&] { static_cast<void>(statement); }, #Exception, VoString(message))))

/// Ends a test that reads or writes with other programs where there is no shell that runs them.
#if defined(_WIN32)
#define VO_SKIP_WITHOUT_SHELL() GTEST_SKIP() << "no shell"
#else
#define VO_SKIP_WITHOUT_SHELL() static_cast<void>(0)
#endif

/// As EXPECT_THROW_MSG, and ends the test on failure.
#define ASSERT_THROW_MSG(statement, Exception, message)                                                                \
    ASSERT_TRUE((::vo::test::Throws<Exception>([&] { static_cast<void>(statement); }, #Exception, VoString(message))))
