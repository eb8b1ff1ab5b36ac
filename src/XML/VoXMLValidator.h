#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <memory>

/// Validates XML documents against one W3C XML schema.
///
/// Everything comes from local files: a schema or document that refers to a network address is not followed there.
/// Belongs to one thread.
class VOCORE_EXPORT VoXMLValidator
{
public:
    /// Loads the schema. Throws VoFileNotFoundException or VoCannotOpenFileException when it cannot be read and
    /// VoInvalidXMLSchemaException with the path and the first error when it is no valid schema.
    explicit VoXMLValidator(const VoFilePath& schema);
    VoXMLValidator(VoXMLValidator&& other) noexcept;            ///< @p other can only be assigned to or destroyed.
    VoXMLValidator& operator=(VoXMLValidator&& other) noexcept; ///< @p other can only be assigned to or destroyed.
    virtual ~VoXMLValidator();                                  ///< Validators may be derived from.

    /// Checks a file. Throws VoInvalidXMLException naming the file and the schema when it is not valid; the first error
    /// with its place is logged (category "xml", information). Throws VoFileNotFoundException or
    /// VoCannotOpenFileException when it cannot be read.
    void validate(const VoFilePath& file) const;
    /// Checks the rest of a device's content. Throws VoInvalidXMLException with the text of the first error.
    void validate(VoIODevice& device) const;
    /// As validate() with the result as a value; still throws when the file cannot be read.
    bool isValid(const VoFilePath& file) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
