#pragma once

#include <Core/VoExport.h>

class VoFunctionRegistry;
class VoLayeredProperties;

/// Functions of the command shell for objects that the host application has, beside those that the library registers by
/// itself.
class VOCORE_EXPORT VoShellFunctions
{
public:
    VoShellFunctions() = delete;

    /// Adds the functions of properties: `property.list`, `property.get`, `property.set`, `property.reset` and
    /// `property.save`.
    ///
    ///     VoShellFunctions::AddProperties(VoFunctionRegistry::Global(), application.properties());
    ///
    /// @param functions the registry
    /// @param properties must outlive the registry, or the functions are removed before by RemoveProperties()
    /// @throws VoInvalidCallException "Function already registered: property.list", when the registry has some already
    static void AddProperties(VoFunctionRegistry& functions, VoLayeredProperties& properties);
    /// Removes what AddProperties() has added. The properties must outlive calls that are under way.
    static void RemoveProperties(VoFunctionRegistry& functions);
};

namespace vo::subsystem {

/// Makes the subsystem "shell" known to Registry::Global(), with those of RegisterLibrary(). It needs "application";
/// while it runs, VoFunctionRegistry::Global() has the functions of the application's properties. The shell need not be
/// started to be used without them. Calling it again does nothing; any thread may.
VOCORE_EXPORT void RegisterShell();

} // namespace vo::subsystem
