#pragma once

#include <Core/VoExport.h>

#include <exception>

/// Keeps why a page could not be written on this thread while the object lives: the functions of ReportPages.h tell
/// only whether they could.
///
///     const ReportPageFailure failure;
///     if (!sp_BuildHTMLSensitivityReport(...))
///         failure.rethrow();
///
/// Objects may be nested; the innermost one keeps the failure. Belongs to the thread that made it.
class VOCORE_EXPORT ReportPageFailure
{
public:
    ReportPageFailure() noexcept; ///< Knows of no failure yet.
    ~ReportPageFailure();
    ReportPageFailure(const ReportPageFailure&) = delete;
    ReportPageFailure& operator=(const ReportPageFailure&) = delete;

    void rethrow() const;        ///< Throws the last failure, if there was one: a VoException.
    static void Keep() noexcept; ///< For who writes pages: keeps the exception that is being handled.

private:
    ReportPageFailure* const m_outer;
    std::exception_ptr m_failure;
};
