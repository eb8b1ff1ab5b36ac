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
