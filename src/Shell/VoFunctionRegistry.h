#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Shell/VoFunction.h>

#include <functional>
#include <memory>

class VoReceiver;

/// Where functions of the command shell are found. The host application makes one of its own dynamic function registry;
/// VoFunctionRegistry is that of the library. Any thread may call any member.
class VOCORE_EXPORT VoAbstractFunctionRegistry
{
public:
    virtual ~VoAbstractFunctionRegistry();

    /// The function of a name, whatever its case; null when there is none. A function may be found and called after it
    /// was removed.
    virtual std::shared_ptr<const VoFunction> find(const VoString& name) const = 0;
    /// The names of all functions, in any order.
    virtual VoDeque<VoString> names() const = 0;
};

/// The functions of the library and of whoever adds some.
///
///     VoFunctionRegistry::Global().add({"volume", "The volume of a box.",
///         {{"a", VoVariant::Double, "metres"}, {"b", VoVariant::Double, "metres"}, {"c", VoVariant::Double,
///         "metres"}},
///         [](const VoFunctionCall& call) {
///             return call.value("a").asDouble() * call.value("b").asDouble() * call.value("c").asDouble();
///         }});
///     VoFunctionRegistry::Global().call("volume", {2.0, 3.0, 4.0}).variant().asDouble(); // 24
///
/// Names ignore case. What stands beside it, setHost(), is asked for what is not found here. Any thread may call any
/// member, functions included.
class VOCORE_EXPORT VoFunctionRegistry final : public VoAbstractFunctionRegistry
{
public:
    /// What has become of a function.
    struct Change
    {
        VoString name; ///< The function's.
        bool isAdded;  ///< Whether it was added; else it was removed.
    };

    VoFunctionRegistry(); ///< Empty.
    VoFunctionRegistry(const VoFunctionRegistry&) = delete;
    VoFunctionRegistry& operator=(const VoFunctionRegistry&) = delete;
    ~VoFunctionRegistry() override;

    /// That of the process, with the library's own functions in it. Never destroyed.
    static VoFunctionRegistry& Global();

    /// Adds a function.
    /// @throws VoInvalidParameterException as VoFunction::requireValid()
    /// @throws VoInvalidCallException "Function already registered: " + name
    void add(VoFunction function);
    bool remove(const VoString& name); ///< Removes a function; gives whether there was one. Calls go on to their end.

    std::shared_ptr<const VoFunction> find(const VoString& name) const override; ///< Here, then at the host's.
    VoDeque<VoString> names() const override; ///< Here and at the host's, each once, ordered without regard to case.

    /// The function of a name.
    /// @throws VoUndefinedFunctionException as Undefined()
    std::shared_ptr<const VoFunction> require(const VoString& name) const;

    /// Calls a function from code.
    /// @throws VoUndefinedFunctionException as Undefined(), and what VoFunction::call() throws
    VoShellValue call(const VoString& name, const VoDeque<VoShellValue>& arguments,
                      const VoStopFlag& stop = VoStopFlag()) const;

    /// "Undefined function: " + name, and the nearest names that there are: "; did you mean table.load or table.save?"
    static VoUndefinedFunctionException Undefined(const VoString& name, const VoDeque<VoString>& names);

    /// Asks this registry too, from now on; null for none. It must not ask back.
    void setHost(std::shared_ptr<const VoAbstractFunctionRegistry> host);

    /// Calls `callback` with each change, so that the host can list the functions in its own registry. It runs on the
    /// thread that changes; what it throws is logged in the category "shell". What two threads change at once may be
    /// told in either order: find() knows. A callback must not change the registry.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] VoReceiver connect(std::function<void(const Change&)> callback);

private:
    struct Private;

    const std::unique_ptr<Private> m_private;
};
