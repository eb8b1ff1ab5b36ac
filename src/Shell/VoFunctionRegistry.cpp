#include <Shell/VoFunctionRegistry.h>

#include <Core/VoException.h>
#include <Core/VoPrintable.h>
#include <Core/detail/NearestName.h>
#include <Shell/detail/LibraryFunctions.h>
#include <Threading/VoBroadcaster.h>
#include <Threading/detail/Guarded.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr std::size_t MostNearest = 3;

std::string Lower(const VoString& name)
{
    std::string text = name.toStdString();
    for (char& c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

} // namespace

struct VoFunctionRegistry::Private
{
    mutable std::mutex mutex; // guards the two; never held while others are called
    std::map<std::string, std::shared_ptr<const VoFunction>> functions; // by the name in lower case
    std::shared_ptr<const VoAbstractFunctionRegistry> host;

    VoBroadcaster<const Change&> changes;

    std::shared_ptr<const VoAbstractFunctionRegistry> currentHost() const
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return host;
    }
};

VoAbstractFunctionRegistry::~VoAbstractFunctionRegistry() = default;

VoFunctionRegistry::VoFunctionRegistry()
    : m_private(std::make_unique<Private>())
{
}

VoFunctionRegistry::~VoFunctionRegistry() = default;

VoFunctionRegistry& VoFunctionRegistry::Global()
{
    static VoFunctionRegistry* const global = [] {
        auto registry = std::make_unique<VoFunctionRegistry>();
        vo::detail::AddLibraryFunctions(*registry);
        return registry.release();
    }();
    return *global;
}

void VoFunctionRegistry::add(VoFunction function)
{
    function.requireValid();
    const auto added = std::make_shared<const VoFunction>(std::move(function));
    {
        const std::lock_guard<std::mutex> lock(m_private->mutex);
        if (!m_private->functions.emplace(Lower(added->name), added).second)
            throw VoInvalidCallException("Function already registered: " + added->name);
    }
    m_private->changes.broadcast({added->name, true});
}

bool VoFunctionRegistry::remove(const VoString& name)
{
    std::shared_ptr<const VoFunction> removed; // destroyed without the lock
    {
        const std::lock_guard<std::mutex> lock(m_private->mutex);
        const auto found = m_private->functions.find(Lower(name));
        if (found == m_private->functions.end())
            return false;
        removed = std::move(found->second);
        m_private->functions.erase(found);
    }
    m_private->changes.broadcast({removed->name, false});
    return true;
}

std::shared_ptr<const VoFunction> VoFunctionRegistry::find(const VoString& name) const
{
    {
        const std::lock_guard<std::mutex> lock(m_private->mutex);
        const auto found = m_private->functions.find(Lower(name));
        if (found != m_private->functions.end())
            return found->second;
    }
    const auto host = m_private->currentHost();
    return host ? host->find(name) : nullptr;
}

VoDeque<VoString> VoFunctionRegistry::names() const
{
    std::map<std::string, VoString> all;
    if (const auto host = m_private->currentHost()) {
        for (const VoString& name : host->names())
            all.emplace(Lower(name), name);
    }
    const std::lock_guard<std::mutex> lock(m_private->mutex);
    for (const auto& [key, function] : m_private->functions)
        all.insert_or_assign(key, function->name);
    VoDeque<VoString> names;
    for (auto& entry : all)
        names.pushBack(std::move(entry.second));
    return names;
}

std::shared_ptr<const VoFunction> VoFunctionRegistry::require(const VoString& name) const
{
    std::shared_ptr<const VoFunction> function = find(name);
    if (!function)
        throw Undefined(name, names());
    return function;
}

VoShellValue VoFunctionRegistry::call(const VoString& name, const VoDeque<VoShellValue>& arguments,
                                      const VoStopFlag& stop) const
{
    VoDeque<VoFunctionArgument> given;
    for (const VoShellValue& argument : arguments)
        given.pushBack({argument});
    VoFunctionContext context;
    context.stop = stop;
    return require(name)->call(given, context);
}

VoUndefinedFunctionException VoFunctionRegistry::Undefined(const VoString& name, const VoDeque<VoString>& names)
{
    std::vector<std::string> lower;
    for (const VoString& known : names)
        lower.push_back(Lower(known));
    const std::vector<std::string_view> views(lower.begin(), lower.end());
    VoString text = "Undefined function: " + vo::Printable(name);
    const char* separator = "; did you mean ";
    const std::string typed = Lower(name);
    for (const std::string_view near : vo::detail::NearestNames(typed, views, MostNearest)) {
        text += separator + VoString(std::string(near));
        separator = " or ";
    }
    return VoUndefinedFunctionException(std::string(separator) == " or " ? text + "?" : text);
}

void VoFunctionRegistry::setHost(std::shared_ptr<const VoAbstractFunctionRegistry> host)
{
    const std::lock_guard<std::mutex> lock(m_private->mutex);
    m_private->host.swap(host);
}

VoReceiver VoFunctionRegistry::connect(std::function<void(const Change&)> callback)
{
    return m_private->changes.connect(vo::detail::Guarded<const Change&>("shell", std::move(callback)));
}
