#pragma once

#include <gtest/gtest.h>

#include <QtWidgets/QApplication>

namespace vo::test {

/// A graphical application while it exists. Under test it shows on no screen: QT_QPA_PLATFORM says so.
class GuiApplication
{
public:
    GuiApplication()
        : m_application(m_argc, m_argv)
    {
    }

private:
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    int m_argc = 1;
    QApplication m_application;
};

/// Cases with a graphical application each.
class GuiTest : public testing::Test
{
private:
    GuiApplication m_application;
};

} // namespace vo::test
