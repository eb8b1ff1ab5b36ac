#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Threads.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>
#include <utility>
#include <vector>

/// @file
/// What every test program includes, and need not name again: GoogleTest, the headers of the standard library and the
/// exceptions that most tests use, threads, and the matcher for the library's exceptions, which GoogleTest cannot print
/// by itself because they are not standard exceptions.

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

/// What `action` throws; a test in which it throws nothing fails.
template <typename Exception, typename Action>
Exception Caught(Action&& action)
{
    try {
        action();
    } catch (const Exception& e) {
        return e;
    }
    throw std::logic_error("nothing was thrown");
}

/// The message of the `Exception` that `action` throws; empty without one.
template <typename Exception = VoException, typename Action>
std::string Refusal(Action&& action)
{
    try {
        action();
        return {};
    } catch (const Exception& e) {
        return e.message().toStdString();
    }
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
