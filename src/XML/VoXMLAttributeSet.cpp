#include <XML/VoXMLAttributeSet.h>

#include <Core/VoXMLException.h>
#include <XML/detail/XMLAttributeCollector.h>
#include <XML/detail/XMLText.h>

#include <QtCore/QXmlStreamAttributes>

#include <algorithm>
#include <set>
#include <utility>

namespace vo::detail {

namespace {

bool HasPrefix(const QXmlStreamAttribute& attribute)
{
    return !attribute.prefix().isEmpty();
}

// Gives out the names under which attributes are known. Local names that are taken are looked up only from the first
// attribute with a prefix on, so documents without any pay nothing.
class AttributeNames
{
public:
    explicit AttributeNames(const QXmlStreamAttributes& attributes)
    {
        if (std::none_of(attributes.begin(), attributes.end(), HasPrefix))
            return;
        for (const QXmlStreamAttribute& attribute : attributes) {
            if (!HasPrefix(attribute))
                m_taken.insert(attribute.name());
        }
    }

    QStringView next(const QXmlStreamAttribute& attribute)
    {
        return HasPrefix(attribute) && !m_taken.insert(attribute.name()).second ? attribute.qualifiedName()
                                                                                : attribute.name();
    }

private:
    std::set<QStringView> m_taken;
};

} // namespace

void XMLAttributeCollector::Collect(const QXmlStreamAttributes& attributes, XMLReadNames& names, VoXMLAttributeSet& set)
{
    set.m_attributes.reserve(static_cast<std::size_t>(attributes.size()));
    AttributeNames uniqueNames(attributes);
    for (const QXmlStreamAttribute& source : attributes)
        set.m_attributes.push_back(VoXMLAttribute(names.shared(uniqueNames.next(source)), FromQtText(source.value())));
}

void XMLAttributeCollector::Append(VoXMLAttributeSet& set, VoString name, VoString value)
{
    set.m_attributes.emplace_back(std::move(name), std::move(value));
}

} // namespace vo::detail

namespace {

bool HasName(const VoXMLAttribute& attribute, const VoString& name)
{
    return attribute.name().toStdString() == name.toStdString();
}

} // namespace

VoXMLAttributeSet::VoXMLAttributeSet() = default;
VoXMLAttributeSet::VoXMLAttributeSet(const VoXMLAttributeSet& other) = default;
VoXMLAttributeSet::VoXMLAttributeSet(VoXMLAttributeSet&& other) noexcept = default;

VoXMLAttributeSet& VoXMLAttributeSet::operator=(const VoXMLAttributeSet& other)
{
    std::vector<VoXMLAttribute> copy(other.m_attributes);
    m_attributes = std::move(copy);
    return *this;
}

VoXMLAttributeSet& VoXMLAttributeSet::operator=(VoXMLAttributeSet&& other) noexcept = default;
VoXMLAttributeSet::~VoXMLAttributeSet() = default;

const VoXMLAttribute* VoXMLAttributeSet::find(const VoString& name) const
{
    const auto found = std::find_if(m_attributes.begin(), m_attributes.end(),
                                    [&](const VoXMLAttribute& attribute) { return HasName(attribute, name); });
    return found == m_attributes.end() ? nullptr : &*found;
}

void VoXMLAttributeSet::addAttribute(const VoString& name, const VoString& value)
{
    if (const VoXMLAttribute* present = find(name))
        m_attributes[static_cast<std::size_t>(present - m_attributes.data())].setValue(value);
    else
        m_attributes.emplace_back(name, value);
}

void VoXMLAttributeSet::addAttribute(const VoXMLAttribute& attribute)
{
    addAttribute(attribute.name(), attribute.value());
}

void VoXMLAttributeSet::removeAttribute(const VoString& name)
{
    if (const VoXMLAttribute* present = find(name))
        m_attributes.erase(m_attributes.begin() + (present - m_attributes.data()));
}

const VoXMLAttribute& VoXMLAttributeSet::get(const VoString& name) const
{
    if (const VoXMLAttribute* present = find(name))
        return *present;
    throw VoUnknownXMLAttributeException(name);
}

const VoString& VoXMLAttributeSet::readAttribute(const VoString& name) const
{
    return get(name).value();
}

VoString VoXMLAttributeSet::readAttribute(const VoString& name, const VoString& defaultValue) const
{
    const VoXMLAttribute* present = find(name);
    return present ? present->value() : defaultValue;
}

bool VoXMLAttributeSet::hasAttribute(const VoString& name) const
{
    return find(name) != nullptr;
}

std::size_t VoXMLAttributeSet::size() const
{
    return m_attributes.size();
}

bool VoXMLAttributeSet::isEmpty() const
{
    return m_attributes.empty();
}

VoXMLAttributeSet::iterator VoXMLAttributeSet::begin()
{
    return m_attributes.begin();
}

VoXMLAttributeSet::iterator VoXMLAttributeSet::end()
{
    return m_attributes.end();
}

VoXMLAttributeSet::const_iterator VoXMLAttributeSet::begin() const
{
    return m_attributes.begin();
}

VoXMLAttributeSet::const_iterator VoXMLAttributeSet::end() const
{
    return m_attributes.end();
}

bool VoXMLAttributeSet::operator==(const VoXMLAttributeSet& other) const
{
    return m_attributes == other.m_attributes;
}

bool VoXMLAttributeSet::operator!=(const VoXMLAttributeSet& other) const
{
    return m_attributes != other.m_attributes;
}

VoXMLAttributeSetPtr::VoXMLAttributeSetPtr() = default;

VoXMLAttributeSetPtr::VoXMLAttributeSetPtr(VoXMLAttributeSet* set)
    : m_set(set)
{
}

VoXMLAttributeSetPtr::VoXMLAttributeSetPtr(VoSharedPtr<VoXMLAttributeSet> set)
    : m_set(std::move(set))
{
}

VoXMLAttributeSetPtr::VoXMLAttributeSetPtr(const VoXMLAttributeSetPtr& other) = default;
VoXMLAttributeSetPtr::VoXMLAttributeSetPtr(VoXMLAttributeSetPtr&& other) noexcept = default;
VoXMLAttributeSetPtr& VoXMLAttributeSetPtr::operator=(const VoXMLAttributeSetPtr& other) = default;
VoXMLAttributeSetPtr& VoXMLAttributeSetPtr::operator=(VoXMLAttributeSetPtr&& other) noexcept = default;
VoXMLAttributeSetPtr::~VoXMLAttributeSetPtr() = default;

VoXMLAttributeSet* VoXMLAttributeSetPtr::get() const
{
    return m_set.get();
}

VoXMLAttributeSetPtr::operator bool() const
{
    return static_cast<bool>(m_set);
}

VoXMLAttributeSet* VoXMLAttributeSetPtr::operator->() const
{
    return &*m_set;
}

VoXMLAttributeSet& VoXMLAttributeSetPtr::operator*() const
{
    return *m_set;
}

VoXMLAttributeSet::iterator VoXMLAttributeSetPtr::begin() const
{
    return m_set->begin();
}

VoXMLAttributeSet::iterator VoXMLAttributeSetPtr::end() const
{
    return m_set->end();
}
