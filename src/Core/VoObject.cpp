#include <Core/VoObject.h>

VoObject::~VoObject() = default;
