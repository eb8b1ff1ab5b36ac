#pragma once

#include <Application/VoValueChange.h>
#include <Application/VoValueDefinition.h>
#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>

#include <functional>
#include <memory>
#include <optional>

/// Properties of an application that are kept in a file, in layers: what a higher layer says hides what the lower ones
/// say.
///
///     VoLayeredProperties settings({machineFile, userFile});
///     settings.define({"editor.grid", 10, "Distance of the grid's points", 1, 100});
///     settings.value("editor.grid").asInteger();       // 10
///     settings.set("editor.grid", 5);                  // in the user's layer
///     settings.layer("Editor.Grid");                   // Layer::User
///     settings.save();
///
/// Names (see VoValueDefinition::IsValidName()) ignore case; "." makes a tree of them, see group(). Properties may be
/// used without a definition; with one, values that it does not allow are refused, and those that a file or the
/// environment has count for nothing, with a warning in the log. A property that is defined as "editor.grid" has the
/// environment variable VO_EDITOR_GRID: the name in upper case, with "_" for "." and "-".
///
/// Any thread may call any member. Callbacks run as those of VoGlobalValues do. Reading a value never waits for a disk.
class VOCORE_EXPORT VoLayeredProperties
{
public:
    /// Where a value comes from; later ones hide earlier ones.
    enum class Layer
    {
        Default,     ///< the definition
        Machine,     ///< the file that all users of the machine share and that is only read
        User,        ///< the user's file, and what set() has changed since
        Environment, ///< environment variables, read when a property is defined
        CommandLine  ///< what setOverride() has set for this process
    };

    /// Where the layers are kept.
    struct VOCORE_EXPORT Sources
    {
        VoFilePath machine{};               ///< The machine's file; null for none.
        VoFilePath user{};                  ///< The user's file; null for none: nothing is kept then.
        VoString environmentPrefix = "VO_"; ///< What the environment's names begin with; empty: it is not asked.
    };

    /// "default", "machine", "user", "environment" or "command line".
    static const char* LayerName(Layer layer) noexcept;

    VoLayeredProperties(); ///< Without files; the environment is asked.
    /// Reads the files that are there. A user's file that is damaged is renamed to its name with ".damaged" and, where
    /// that is taken, a number; that, a damaged machine's file, and files that cannot be read are logged as errors in
    /// the category "properties", and their layers are empty.
    explicit VoLayeredProperties(const Sources& sources);
    VoLayeredProperties(const VoLayeredProperties&) = delete;
    VoLayeredProperties& operator=(const VoLayeredProperties&) = delete;
    ~VoLayeredProperties(); ///< Does not save.

    /// Defines a property, and reads its environment variable. Again in the same way does nothing.
    /// @throws VoInvalidCallException "Property already defined: " and the name, for another definition
    /// @throws VoInvalidParameterException "Properties share an environment variable: " and both names; and what
    /// VoValueDefinition::requireValid() throws
    void define(const VoValueDefinition& definition);
    /// The definition of a property; none where it has none.
    std::optional<VoValueDefinition> definition(const VoString& name) const;

    /// @name Values
    /// @{
    bool hasProperty(const VoString& name) const; ///< Whether any layer has a value.
    /// The value of the highest layer that has one.
    /// @throws VoNotFoundException (name) where none has
    VoVariant value(const VoString& name) const;
    /// The same; `otherwise` where no layer has a value.
    VoVariant value(const VoString& name, const VoVariant& otherwise) const;
    /// The layer that value() comes from.
    /// @throws VoNotFoundException (name) where none has one
    Layer layer(const VoString& name) const;
    /// What one layer says; none where it says nothing.
    std::optional<VoVariant> valueIn(Layer layer, const VoString& name) const;
    VoProperties properties() const; ///< All properties with their values, by name.
    /// Those whose names begin with `name` and ".", without that beginning: of "editor" among others "grid".
    VoProperties group(const VoString& name) const;
    /// @}

    /// @name Changes
    /// @throws VoInvalidParameterException as VoValueDefinition::require() and fromText() where a definition does not
    ///         allow the value; "Invalid value name: " and the name; "Value without a kind: " and the name, for Null
    /// @throws VoInvalidUseException "Property is read-only: " and the name, where it is defined so
    /// @{
    void set(const VoString& name, const VoVariant& value); ///< Sets a value in the user's layer; save() keeps it.
    /// The same with what a text stands for; without a definition it is a String.
    void setText(const VoString& name, const VoString& text);
    void reset(const VoString& name); ///< Removes a value from the user's layer.
    /// Sets a value of this process in the command line's layer, also of a read-only property, to what a text stands
    /// for; without a definition it is a String. Values of properties that are defined later count as they do in files.
    void setOverride(const VoString& name, const VoString& text);
    /// @}

    /// @name The user's file
    /// @{
    /// Writes what set() and reset() have changed since the last save() into the user's file, as it is now: what other
    /// processes have changed of other names stays and becomes visible here. The directory is made where it is missing.
    /// Does nothing without changes or without a file. After a failure the changes wait for the next save().
    /// @throws VoFileLockedException with the file beside the user's file that is its lock, when another process has
    /// not let go of it for ten seconds, and what reading, writing and replacing a file throws; a file that cannot be
    /// read is not replaced
    void save();
    /// Reads the files again where they have changed; what set() has changed and save() has not written stays on top.
    /// Returns whether any value is another than before. Errors are logged as by the constructor, and the layer stays
    /// as it was.
    bool reload();
    bool isSaved() const; ///< Whether set() and reset() have changed nothing that save() has not written.
    /// @}

    /// Calls `callback` with every change of a value while the receiver lives. Destroying the receiver waits for a
    /// callback that just runs on another thread.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] VoReceiver connect(std::function<void(const VoValueChange&)> callback);
    /// The same for the property of one name.
    [[nodiscard]] VoReceiver connect(const VoString& name, std::function<void(const VoValueChange&)> callback);

private:
    struct Private;
    class Telling;

    std::unique_ptr<Private> m_private;
};
