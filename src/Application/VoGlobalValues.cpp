#include <Application/VoGlobalValues.h>

#include <Application/VoGlobalValue.h>
#include <Application/detail/ChangeNotifier.h>
#include <Application/detail/VariantText.h>
#include <Core/VoException.h>
#include <Core/VoProperties.h>

#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <utility>
#include <vector>

namespace vo::detail {

struct GlobalValueRecord
{
    const VoValueDefinition definition;
    VoVariant value; // under the registry's mutex
};

namespace {

class GlobalValueRegistry
{
public:
    void define(const VoValueDefinition& definition);
    GlobalValueRecord* find(const VoString& name) const;
    GlobalValueRecord& get(const VoString& name) const;
    VoVariant value(const GlobalValueRecord& record) const;
    void set(GlobalValueRecord& record, const VoVariant& value);
    void restore(const VoProperties& changed);

    template <typename Function>
    void forEach(const Function& function) const
    {
        const std::shared_lock lock(m_mutex);
        for (const auto& [name, record] : m_records)
            function(*record);
    }

    ChangeNotifier notifier;

private:
    void change(GlobalValueRecord& record, const VoVariant& value);

    mutable std::shared_mutex m_mutex;
    std::map<VoString, std::unique_ptr<GlobalValueRecord>> m_records; // the names compare without case
};

// Never destroyed: handles of static lifetime are used while the process ends.
GlobalValueRegistry& TheRegistry()
{
    static GlobalValueRegistry& registry = *new GlobalValueRegistry;
    return registry;
}

void GlobalValueRegistry::define(const VoValueDefinition& definition)
{
    definition.requireValid();
    const std::unique_lock lock(m_mutex);
    if (const auto known = m_records.find(definition.name); known != m_records.end()) {
        if (known->second->definition != definition)
            throw VoInvalidCallException("Global value already defined: " + definition.name);
        return;
    }
    std::unique_ptr<GlobalValueRecord> record(new GlobalValueRecord{definition, definition.defaultValue});
    m_records.emplace(definition.name, std::move(record));
}

GlobalValueRecord* GlobalValueRegistry::find(const VoString& name) const
{
    const std::shared_lock lock(m_mutex);
    const auto found = m_records.find(name);
    return found == m_records.end() ? nullptr : found->second.get();
}

GlobalValueRecord& GlobalValueRegistry::get(const VoString& name) const
{
    if (GlobalValueRecord* const record = find(name))
        return *record;
    throw VoNotFoundException(name);
}

VoVariant GlobalValueRegistry::value(const GlobalValueRecord& record) const
{
    const std::shared_lock lock(m_mutex);
    return record.value;
}

void GlobalValueRegistry::set(GlobalValueRecord& record, const VoVariant& value)
{
    record.definition.require(value);
    {
        const std::unique_lock lock(m_mutex);
        change(record, value);
    }
    notifier.deliver();
}

// Under the mutex, so that the changes of a value are told in the order in which they were made.
void GlobalValueRegistry::change(GlobalValueRecord& record, const VoVariant& value)
{
    if (IsSameVariant(record.value, value))
        return;
    VoVariant kept = value;
    notifier.post({record.definition.name, record.value, value});
    record.value.swap(kept);
}

void GlobalValueRegistry::restore(const VoProperties& changed)
{
    {
        const std::unique_lock lock(m_mutex);
        std::vector<std::pair<GlobalValueRecord*, VoVariant>> wanted;
        for (const auto& [name, record] : m_records) {
            if (record->definition.readOnly)
                continue;
            wanted.emplace_back(record.get(), changed.value(name, record->definition.defaultValue));
            record->definition.require(wanted.back().second);
        }
        for (const auto& [record, value] : wanted)
            change(*record, value);
    }
    notifier.deliver();
}

void RequireWritable(const GlobalValueRecord& record)
{
    if (record.definition.readOnly)
        throw VoInvalidUseException("Global value is read-only: " + record.definition.name);
}

bool IsAtDefault(const GlobalValueRecord& record, const VoVariant& value)
{
    return IsSameVariant(value, record.definition.defaultValue);
}

} // namespace

GlobalValueHandle::GlobalValueHandle(const VoString& name, VoVariant::Type type)
    : m_record(&TheRegistry().get(name))
{
    const VoVariant::Type actual = m_record->definition.type();
    if (actual != type)
        throw VoInvalidCastException(VoVariant::TypeString(actual), VoVariant::TypeString(type));
}

VoVariant GlobalValueHandle::variant() const
{
    return TheRegistry().value(*m_record);
}

void GlobalValueHandle::setVariant(const VoVariant& value) const
{
    RequireWritable(*m_record);
    publishVariant(value);
}

void GlobalValueHandle::publishVariant(const VoVariant& value) const
{
    TheRegistry().set(*m_record, value);
}

const VoString& GlobalValueHandle::recordName() const noexcept
{
    return m_record->definition.name;
}

} // namespace vo::detail

using vo::detail::GlobalValueRecord;
using vo::detail::IsAtDefault;
using vo::detail::RequireWritable;
using vo::detail::TheRegistry;

void VoGlobalValues::Define(const VoValueDefinition& definition)
{
    TheRegistry().define(definition);
}

bool VoGlobalValues::IsDefined(const VoString& name)
{
    return TheRegistry().find(name) != nullptr;
}

VoValueDefinition VoGlobalValues::Definition(const VoString& name)
{
    return TheRegistry().get(name).definition;
}

VoDeque<VoString> VoGlobalValues::Names()
{
    VoDeque<VoString> names;
    TheRegistry().forEach([&](const GlobalValueRecord& record) { names.push_back(record.definition.name); });
    return names;
}

VoVariant VoGlobalValues::Value(const VoString& name)
{
    return TheRegistry().value(TheRegistry().get(name));
}

bool VoGlobalValues::IsSet(const VoString& name)
{
    const GlobalValueRecord& record = TheRegistry().get(name);
    return !IsAtDefault(record, TheRegistry().value(record));
}

void VoGlobalValues::Set(const VoString& name, const VoVariant& value)
{
    GlobalValueRecord& record = TheRegistry().get(name);
    RequireWritable(record);
    TheRegistry().set(record, value);
}

void VoGlobalValues::SetText(const VoString& name, const VoString& text)
{
    Set(name, Definition(name).fromText(text));
}

void VoGlobalValues::Reset(const VoString& name)
{
    Set(name, Definition(name).defaultValue);
}

VoProperties VoGlobalValues::Changed()
{
    VoDeque<VoProperty> changed;
    TheRegistry().forEach([&](const GlobalValueRecord& record) {
        if (!IsAtDefault(record, record.value))
            changed.push_back(VoProperty(record.definition.name, record.value));
    });
    return VoProperties(std::move(changed));
}

void VoGlobalValues::Restore(const VoProperties& changed)
{
    TheRegistry().restore(changed);
}

VoReceiver VoGlobalValues::Connect(std::function<void(const VoValueChange&)> callback)
{
    return TheRegistry().notifier.connect(VoString(), std::move(callback));
}

VoReceiver VoGlobalValues::Connect(const VoString& name, std::function<void(const VoValueChange&)> callback)
{
    return TheRegistry().notifier.connect(TheRegistry().get(name).definition.name, std::move(callback));
}
