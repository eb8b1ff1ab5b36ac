#include <Actions/VoAction.h>

#include <Core/VoException.h>
#include <Threading/VoBroadcaster.h>
#include <Threading/detail/Guarded.h>

#include <deque>
#include <utility>

class VoAction::Private
{
public:
    VoString id;
    VoString text;
    VoString description;
    VoString iconName;
    VoString shortcut;
    bool isEnabled = true;
    bool isCheckable = false;
    bool isChecked = false;
    Function function;
    VoBroadcaster<Property> changes;
    std::deque<Property> untold;
};

VoAction::VoAction(VoString id, VoString text, Function function)
    : m_private(std::make_unique<Private>())
{
    if (id.isEmpty() || id.containsWhiteSpace())
        throw VoInvalidParameterException("Invalid action identifier: " + id);
    m_private->id = std::move(id);
    m_private->text = std::move(text);
    m_private->function = std::move(function);
}

VoAction::~VoAction() = default;

const VoString& VoAction::id() const noexcept
{
    return m_private->id;
}

const VoString& VoAction::text() const noexcept
{
    return m_private->text;
}

const VoString& VoAction::description() const noexcept
{
    return m_private->description;
}

const VoString& VoAction::iconName() const noexcept
{
    return m_private->iconName;
}

const VoString& VoAction::shortcut() const noexcept
{
    return m_private->shortcut;
}

bool VoAction::isEnabled() const noexcept
{
    return m_private->isEnabled;
}

bool VoAction::isCheckable() const noexcept
{
    return m_private->isCheckable;
}

bool VoAction::isChecked() const noexcept
{
    return m_private->isChecked;
}

void VoAction::setText(VoString text)
{
    changeText(m_private->text, std::move(text), Property::Text);
}

void VoAction::setDescription(VoString description)
{
    changeText(m_private->description, std::move(description), Property::Description);
}

void VoAction::setIconName(VoString name)
{
    changeText(m_private->iconName, std::move(name), Property::IconName);
}

void VoAction::setShortcut(VoString shortcut)
{
    changeText(m_private->shortcut, std::move(shortcut), Property::Shortcut);
}

void VoAction::setEnabled(bool enabled)
{
    changeState(m_private->isEnabled, enabled, Property::Enabled);
}

void VoAction::setCheckable(bool checkable)
{
    if (!checkable)
        setChecked(false);
    changeState(m_private->isCheckable, checkable, Property::Checkable);
}

void VoAction::setChecked(bool checked)
{
    if (m_private->isCheckable)
        changeState(m_private->isChecked, checked, Property::Checked);
}

void VoAction::setFunction(Function function)
{
    m_private->function = std::move(function);
}

bool VoAction::trigger()
{
    if (!isEnabled())
        return false;
    const bool before = isChecked();
    setChecked(!before);
    const Function function = m_private->function; // which may replace itself
    try {
        if (function)
            function(isChecked());
    } catch (...) {
        setChecked(before);
        throw;
    }
    return true;
}

VoReceiver VoAction::connect(std::function<void(Property)> callback)
{
    return m_private->changes.connect(vo::detail::Guarded<Property>("actions", std::move(callback)));
}

void VoAction::changeText(VoString& kept, VoString text, Property property)
{
    if (kept.equal(text, VoString::CaseSensitive))
        return;
    kept = std::move(text);
    tell(property);
}

void VoAction::changeState(bool& kept, bool state, Property property)
{
    if (std::exchange(kept, state) != state)
        tell(property);
}

void VoAction::tell(Property property)
{
    // A listener that changes the action has that told after what is being told.
    std::deque<Property>& untold = m_private->untold;
    untold.push_back(property);
    if (untold.size() > 1)
        return;
    for (; !untold.empty(); untold.pop_front())
        m_private->changes.broadcast(untold.front());
}
