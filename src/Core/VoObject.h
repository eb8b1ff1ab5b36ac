#pragma once

#include <Core/VoExport.h>

/// Polymorphic base, without data, of objects that are handed on without their type.
class VOCORE_EXPORT VoObject
{
public:
    virtual ~VoObject();

protected:
    VoObject() = default;
    VoObject(const VoObject&) = default;            ///< For subclasses: there is nothing to copy here.
    VoObject& operator=(const VoObject&) = default; ///< For subclasses: there is nothing to copy here.
};
