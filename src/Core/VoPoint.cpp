#include <Core/VoPoint.h>
#include <Core/VoPointD.h>
#include <Core/detail/NumberText.h>

#include <ostream>

using namespace vo::detail;

std::ostream& operator<<(std::ostream& stream, const VoPoint& point)
{
    return stream << '(' << IntegerText(point.x) << ", " << IntegerText(point.y) << ')';
}

std::ostream& operator<<(std::ostream& stream, const VoPointD& point)
{
    return stream << '(' << GeneralText(point.x) << ", " << GeneralText(point.y) << ')';
}
