#include <Application/VoLayeredProperties.h>

#include <Application/detail/ChangeNotifier.h>
#include <Application/detail/PropertiesFile.h>
#include <Application/detail/VariantText.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoProperties.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileLock.h>
#include <FileSystem/VoFileSystem.h>
#include <Subsystem/VoLogging.h>

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

#include <chrono>
#include <map>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

using vo::detail::IsSameVariant;
using vo::detail::PropertiesFile;
using vo::detail::ValueMap;

namespace {

constexpr std::chrono::seconds LongestWait(10);
constexpr VoLayeredProperties::Layer Layers[] = {
    VoLayeredProperties::Layer::CommandLine, VoLayeredProperties::Layer::Environment, VoLayeredProperties::Layer::User,
    VoLayeredProperties::Layer::Machine, VoLayeredProperties::Layer::Default};

using Changes = std::map<VoString, std::optional<VoVariant>>; // none: removed
using Names = std::set<VoString>;

VoString VariableOf(const VoString& prefix, const VoString& name)
{
    std::string variable = prefix.toStdString();
    for (const char c : name) {
        const bool isLower = c >= 'a' && c <= 'z';
        variable += c == '.' || c == '-' ? '_' : isLower ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return VoString(std::move(variable));
}

VoString LockName(const VoFilePath& path)
{
    return path.path() + ".lock";
}

// Keeps other processes from the file, whose directory is made where it is missing.
class UserFileLock
{
public:
    explicit UserFileLock(const VoFilePath& path)
        : m_lock(Prepared(path), Patience{LockName(path), std::chrono::steady_clock::now() + LongestWait})
    {
    }

private:
    struct Patience
    {
        VoString name;
        std::chrono::steady_clock::time_point end;

        void operator()() const
        {
            if (std::chrono::steady_clock::now() > end)
                throw VoFileLockedException(name);
        }
    };

    static VoFilePath Prepared(const VoFilePath& path)
    {
        if (const VoDirectoryPath directory = path.parent(); !directory.path().isEmpty())
            VoFileSystem::CreateDirectory(directory, true);
        return VoFilePath(LockName(path));
    }

    const VoFileLock m_lock;
};

void Apply(ValueMap& values, const Changes& changes)
{
    for (const auto& [name, value] : changes) {
        if (value)
            values[name] = *value;
        else
            values.erase(name);
    }
}

void AddNames(Names& names, const ValueMap& values)
{
    for (const auto& [name, value] : values)
        names.insert(name);
}

bool IsSame(const std::optional<VoVariant>& a, const std::optional<VoVariant>& b)
{
    return a && b ? IsSameVariant(*a, *b) : !a && !b;
}

} // namespace

struct VoLayeredProperties::Private
{
    explicit Private(const Sources& where)
        : prefix(where.environmentPrefix)
        , machineFile(where.machine)
        , userFile(where.user)
    {
    }

    std::optional<VoVariant> said(Layer layer, const VoString& name) const;
    std::pair<std::optional<VoVariant>, Layer> effective(const VoString& name) const;
    Names allNames() const;
    const VoValueDefinition* find(const VoString& name) const;
    void requireWritable(const VoString& name, const VoVariant& value) const;
    void warnOfIgnored(const PropertiesFile& file) const;
    void warnIfIgnored(const VoValueDefinition& definition, const ValueMap& values, const VoFilePath& path) const;
    template <typename Function>
    bool change(const Names& names, const Function& function);
    bool takeLayers();
    void readMachine();
    void readUser();
    void readUserLocked();
    VoVariant fromText(const VoString& name, const VoString& text) const;
    void note(vo::logging::Level level, const VoString& text) const;
    void tell() noexcept;
    void readVariable(const VoValueDefinition& definition);

    const VoString prefix;

    // Under this one, which is held while files are read and written; taken before the other.
    std::mutex fileMutex;
    PropertiesFile machineFile;
    PropertiesFile userFile;

    mutable std::mutex mutex;
    std::map<VoString, VoValueDefinition> definitions;
    std::map<VoString, VoString> variables; // the property of an environment variable
    ValueMap machine;
    ValueMap user;   // as in the file
    Changes unsaved; // since the file
    ValueMap environment;
    ValueMap commandLine;

    // What is to be logged when no lock is held: a sink may ask for a property.
    mutable std::mutex notesMutex;
    mutable std::vector<std::pair<vo::logging::Level, VoString>> notes;

    vo::detail::ChangeNotifier notifier;
};

// Tells, when it ends and no lock is held any more, what has changed and what is to be logged.
class VoLayeredProperties::Telling
{
public:
    explicit Telling(Private& state)
        : m_state(state)
    {
    }
    Telling(const Telling&) = delete;
    Telling& operator=(const Telling&) = delete;
    ~Telling() { m_state.tell(); }

private:
    Private& m_state;
};

void VoLayeredProperties::Private::note(vo::logging::Level level, const VoString& text) const
{
    const std::lock_guard lock(notesMutex);
    notes.emplace_back(level, text);
}

void VoLayeredProperties::Private::tell() noexcept
{
    std::vector<std::pair<vo::logging::Level, VoString>> told;
    {
        const std::lock_guard lock(notesMutex);
        told.swap(notes);
    }
    for (const auto& [level, text] : told)
        vo::logging::Logger::Get("properties").log(level, text);
    notifier.deliver();
}

const VoValueDefinition* VoLayeredProperties::Private::find(const VoString& name) const
{
    const auto found = definitions.find(name);
    return found == definitions.end() ? nullptr : &found->second;
}

// What a layer says, whether or not it is allowed.
std::optional<VoVariant> VoLayeredProperties::Private::said(Layer layer, const VoString& name) const
{
    if (layer == Layer::Default) {
        const VoValueDefinition* const definition = find(name);
        return definition ? std::optional(definition->defaultValue) : std::nullopt;
    }
    if (const auto change = unsaved.find(name); layer == Layer::User && change != unsaved.end())
        return change->second;
    const ValueMap& values = layer == Layer::Machine       ? machine
                             : layer == Layer::User        ? user
                             : layer == Layer::Environment ? environment
                                                           : commandLine;
    const auto found = values.find(name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

std::pair<std::optional<VoVariant>, VoLayeredProperties::Layer>
VoLayeredProperties::Private::effective(const VoString& name) const
{
    const VoValueDefinition* const definition = find(name);
    for (const Layer layer : Layers) {
        std::optional<VoVariant> value = said(layer, name);
        if (value && !value->isNull() && (!definition || definition->isAllowed(*value)))
            return {std::move(value), layer};
    }
    return {std::nullopt, Layer::Default};
}

Names VoLayeredProperties::Private::allNames() const
{
    Names names;
    for (const auto& [name, definition] : definitions)
        names.insert(name); // first, so that their spelling is kept
    for (const ValueMap* const values : {&machine, &user, &environment, &commandLine})
        AddNames(names, *values);
    for (const auto& [name, value] : unsaved)
        names.insert(name);
    return names;
}

void VoLayeredProperties::Private::requireWritable(const VoString& name, const VoVariant& value) const
{
    if (!VoValueDefinition::IsValidName(name))
        throw VoInvalidParameterException("Invalid value name: " + name);
    if (value.isNull())
        throw VoInvalidParameterException("Value without a kind: " + name);
    const VoValueDefinition* const definition = find(name);
    if (!definition)
        return;
    if (definition->readOnly)
        throw VoInvalidUseException("Property is read-only: " + definition->name);
    definition->require(value);
}

void VoLayeredProperties::Private::warnOfIgnored(const PropertiesFile& file) const
{
    const std::lock_guard lock(mutex);
    for (const auto& [name, definition] : definitions)
        warnIfIgnored(definition, file.values(), file.path());
}

void VoLayeredProperties::Private::warnIfIgnored(const VoValueDefinition& definition, const ValueMap& values,
                                                 const VoFilePath& path) const
{
    const auto found = values.find(definition.name);
    if (found != values.end() && !definition.isAllowed(found->second))
        note(vo::logging::Level::Warning, "Value in " + path.path() + " ignored: " + definition.name + " = " +
                                              vo::detail::VariantText(found->second) +
                                              ", allowed: " + definition.allowedForm());
}

// Calls under the lock what changes the values of some names; a Telling tells what became of them. Whether anything
// did.
template <typename Function>
bool VoLayeredProperties::Private::change(const Names& names, const Function& function)
{
    const std::lock_guard lock(mutex);
    std::vector<std::optional<VoVariant>> before;
    for (const VoString& name : names)
        before.push_back(effective(name).first);
    function();
    bool isChanged = false;
    std::size_t i = 0;
    for (const VoString& name : names) {
        const std::optional<VoVariant> now = effective(name).first;
        if (!IsSame(before[i], now)) {
            notifier.post({name, before[i].value_or(VoVariant()), now.value_or(VoVariant())});
            isChanged = true;
        }
        ++i;
    }
    return isChanged;
}

// Makes what was read of the files the values. The caller has the files.
bool VoLayeredProperties::Private::takeLayers()
{
    Names names;
    {
        const std::lock_guard lock(mutex);
        names = allNames();
    }
    AddNames(names, machineFile.values());
    AddNames(names, userFile.values());
    return change(names, [this] {
        machine = machineFile.values();
        user = userFile.values();
    });
}

void VoLayeredProperties::Private::readMachine()
{
    try {
        if (machineFile.read())
            warnOfIgnored(machineFile);
    } catch (...) {
        note(vo::logging::Level::Error, "Properties cannot be read (" + vo::CurrentExceptionText() + ")");
    }
}

void VoLayeredProperties::Private::readUser()
{
    try {
        try {
            if (userFile.read())
                warnOfIgnored(userFile);
        } catch (const VoValidationException&) {
            const UserFileLock lock(userFile.path());
            readUserLocked(); // another process may have mended it
        }
    } catch (...) {
        note(vo::logging::Level::Error, "Properties cannot be read (" + vo::CurrentExceptionText() + ")");
    }
}

void VoLayeredProperties::Private::readUserLocked()
{
    try {
        userFile.read();
    } catch (const VoValidationException& damage) {
        const VoFilePath aside = userFile.moveAside();
        note(vo::logging::Level::Error, damage.message() + " (" + damage.reason() + "), kept as " + aside.path());
        userFile.read();
    }
}

VoVariant VoLayeredProperties::Private::fromText(const VoString& name, const VoString& text) const
{
    const VoValueDefinition* const definition = find(name);
    return definition ? definition->fromText(text) : VoVariant(text);
}

void VoLayeredProperties::Private::readVariable(const VoValueDefinition& definition)
{
    if (prefix.isEmpty())
        return;
    const VoString variable = VariableOf(prefix, definition.name);
    const auto [owner, isNew] = variables.emplace(variable, definition.name);
    if (!isNew)
        throw VoInvalidParameterException("Properties share an environment variable: " + owner->second + ", " +
                                          definition.name);
    if (!qEnvironmentVariableIsSet(variable.c_str()))
        return;
    try {
        environment[definition.name] = definition.fromText(VoString(qgetenv(variable.c_str()).toStdString()));
    } catch (const VoInvalidParameterException& failure) {
        note(vo::logging::Level::Warning, "Environment variable " + variable + " ignored: " + failure.message());
    }
}

const char* VoLayeredProperties::LayerName(Layer layer) noexcept
{
    switch (layer) {
    case Layer::Default:
        return "default";
    case Layer::Machine:
        return "machine";
    case Layer::User:
        return "user";
    case Layer::Environment:
        return "environment";
    case Layer::CommandLine:
        break;
    }
    return "command line";
}

VoLayeredProperties::VoLayeredProperties()
    : VoLayeredProperties(Sources())
{
}

VoLayeredProperties::VoLayeredProperties(const Sources& sources)
    : m_private(std::make_unique<Private>(sources))
{
    const Telling telling(*m_private);
    m_private->readMachine();
    m_private->readUser();
    m_private->takeLayers();
}

VoLayeredProperties::~VoLayeredProperties() = default;

void VoLayeredProperties::define(const VoValueDefinition& definition)
{
    definition.requireValid();
    const Telling telling(*m_private);
    m_private->change({definition.name}, [&] {
        if (const VoValueDefinition* const known = m_private->find(definition.name)) {
            if (*known != definition)
                throw VoInvalidCallException("Property already defined: " + definition.name);
            return;
        }
        m_private->readVariable(definition);
        m_private->definitions.emplace(definition.name, definition);
        m_private->warnIfIgnored(definition, m_private->machine, m_private->machineFile.path());
        m_private->warnIfIgnored(definition, m_private->user, m_private->userFile.path());
    });
}

std::optional<VoValueDefinition> VoLayeredProperties::definition(const VoString& name) const
{
    const std::lock_guard lock(m_private->mutex);
    const VoValueDefinition* const found = m_private->find(name);
    return found ? std::optional(*found) : std::nullopt;
}

bool VoLayeredProperties::hasProperty(const VoString& name) const
{
    const std::lock_guard lock(m_private->mutex);
    return m_private->effective(name).first.has_value();
}

VoVariant VoLayeredProperties::value(const VoString& name) const
{
    const std::lock_guard lock(m_private->mutex);
    std::optional<VoVariant> value = m_private->effective(name).first;
    if (!value)
        throw VoNotFoundException(name);
    return *std::move(value);
}

VoVariant VoLayeredProperties::value(const VoString& name, const VoVariant& otherwise) const
{
    const std::lock_guard lock(m_private->mutex);
    return m_private->effective(name).first.value_or(otherwise);
}

VoLayeredProperties::Layer VoLayeredProperties::layer(const VoString& name) const
{
    const std::lock_guard lock(m_private->mutex);
    const auto [value, layer] = m_private->effective(name);
    if (!value)
        throw VoNotFoundException(name);
    return layer;
}

std::optional<VoVariant> VoLayeredProperties::valueIn(Layer layer, const VoString& name) const
{
    const std::lock_guard lock(m_private->mutex);
    return m_private->said(layer, name);
}

VoProperties VoLayeredProperties::properties() const
{
    VoDeque<VoProperty> properties;
    const std::lock_guard lock(m_private->mutex);
    for (const VoString& name : m_private->allNames()) {
        if (std::optional<VoVariant> value = m_private->effective(name).first)
            properties.push_back(VoProperty(name, *std::move(value)));
    }
    return VoProperties(std::move(properties));
}

VoProperties VoLayeredProperties::group(const VoString& name) const
{
    const VoString beginning = name + ".";
    VoDeque<VoProperty> members;
    for (const VoProperty& property : properties()) {
        const VoString& whole = property.name();
        if (whole.size() > beginning.size() && VoString(whole.substring(0, beginning.size())) == beginning)
            members.push_back(VoProperty(VoString(whole.substring(beginning.size())), property.value()));
    }
    return VoProperties(std::move(members));
}

void VoLayeredProperties::set(const VoString& name, const VoVariant& value)
{
    const Telling telling(*m_private);
    m_private->change({name}, [&] {
        m_private->requireWritable(name, value);
        m_private->unsaved[name] = value;
    });
}

void VoLayeredProperties::setText(const VoString& name, const VoString& text)
{
    const Telling telling(*m_private);
    m_private->change({name}, [&] {
        const VoVariant value = m_private->fromText(name, text);
        m_private->requireWritable(name, value);
        m_private->unsaved[name] = value;
    });
}

void VoLayeredProperties::reset(const VoString& name)
{
    const Telling telling(*m_private);
    m_private->change({name}, [&] {
        if (const VoValueDefinition* const definition = m_private->find(name))
            m_private->requireWritable(name, definition->defaultValue);
        m_private->unsaved[name] = std::nullopt;
    });
}

void VoLayeredProperties::setOverride(const VoString& name, const VoString& text)
{
    if (!VoValueDefinition::IsValidName(name))
        throw VoInvalidParameterException("Invalid value name: " + name);
    const Telling telling(*m_private);
    m_private->change({name}, [&] { m_private->commandLine[name] = m_private->fromText(name, text); });
}

void VoLayeredProperties::save()
{
    const Telling telling(*m_private);
    const std::lock_guard files(m_private->fileMutex);
    Changes saved;
    {
        const std::lock_guard lock(m_private->mutex);
        saved = m_private->unsaved;
    }
    if (saved.empty() || m_private->userFile.path().isNull())
        return;
    {
        const UserFileLock lock(m_private->userFile.path());
        m_private->readUserLocked();
        ValueMap values = m_private->userFile.values();
        Apply(values, saved);
        m_private->userFile.write(values);
    }
    m_private->takeLayers();
    const std::lock_guard lock(m_private->mutex);
    for (const auto& [name, value] : saved) {
        const auto now = m_private->unsaved.find(name); // another thread may have set it anew meanwhile
        if (now != m_private->unsaved.end() && IsSame(now->second, value))
            m_private->unsaved.erase(now);
    }
}

bool VoLayeredProperties::reload()
{
    const Telling telling(*m_private);
    const std::lock_guard files(m_private->fileMutex);
    if (m_private->machineFile.mayHaveChanged())
        m_private->readMachine();
    if (m_private->userFile.mayHaveChanged())
        m_private->readUser();
    return m_private->takeLayers();
}

bool VoLayeredProperties::isSaved() const
{
    const std::lock_guard lock(m_private->mutex);
    return m_private->unsaved.empty();
}

VoReceiver VoLayeredProperties::connect(std::function<void(const VoValueChange&)> callback)
{
    return m_private->notifier.connect(VoString(), std::move(callback));
}

VoReceiver VoLayeredProperties::connect(const VoString& name, std::function<void(const VoValueChange&)> callback)
{
    return m_private->notifier.connect(name, std::move(callback));
}
