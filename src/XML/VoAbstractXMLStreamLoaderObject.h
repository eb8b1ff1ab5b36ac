#pragma once

#include <Core/VoExport.h>

/// Base of every object that a rule of a VoXMLStreamLoader builds.
class VOCORE_EXPORT VoAbstractXMLStreamLoaderObject
{
public:
    virtual ~VoAbstractXMLStreamLoaderObject(); ///< Objects are deleted through their base.

    /// A number by which the owner of a family of loadable classes tells them apart; each family fixes its own numbers.
    virtual int typeCode() const = 0;

protected:
    /// @name Only whole objects are made, copied and assigned
    /// @{
    VoAbstractXMLStreamLoaderObject() = default;                                       ///< For derived classes.
    VoAbstractXMLStreamLoaderObject(const VoAbstractXMLStreamLoaderObject&) = default; ///< For derived classes.
    /// For derived classes.
    VoAbstractXMLStreamLoaderObject& operator=(const VoAbstractXMLStreamLoaderObject&) = default;
    /// @}
};
