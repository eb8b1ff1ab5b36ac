#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>

#include <cstdint>
#include <memory>

/// Validates XML documents against one W3C XML schema.
///
/// Nothing but the schema and the local files that it includes is read: addresses elsewhere in the schema are left out,
/// as if the schema did not name them, and a document's own references to schemas are not followed at all. Documents
/// are read within the limits of VoXMLStreamReader; more than 1000 levels are refused with VoStackLimitException, more
/// than 2 GiB with VoOverflowException. Belongs to one thread.
class VOCORE_EXPORT VoXMLValidator
{
public:
    /// One thing that is wrong with a document.
    struct VOCORE_EXPORT Error
    {
        VoString reason;           ///< What is wrong.
        std::int64_t line = 0;     ///< Where, counted from 1: the end of the start tag concerned. 0 if not known.
        std::int64_t column = 0;   ///< Where in the line; tells nothing without a line.
        VoString toString() const; ///< "reason (line 1, column 2)"
    };

    /// Loads the schema.
    /// @throws VoFileNotFoundException, VoCannotOpenFileException when it cannot be read
    /// @throws VoInvalidXMLSchemaException with the path and the first error with its place when it is no valid schema
    explicit VoXMLValidator(const VoFilePath& schema);
    VoXMLValidator(VoXMLValidator&& other) noexcept;            ///< `other` can only be assigned to or destroyed.
    VoXMLValidator& operator=(VoXMLValidator&& other) noexcept; ///< `other` can only be assigned to or destroyed.
    virtual ~VoXMLValidator();                                  ///< Validators may be derived from.

    /// Checks a file.
    /// @throws VoInvalidXMLException "Invalid XML: " + file + ", for schema: " + schema + ": " and the first error with
    /// its place when it is not valid
    /// @throws VoFileNotFoundException, VoCannotOpenFileException when it cannot be read
    void validate(const VoFilePath& file) const;
    /// Checks the rest of a device's content.
    /// @throws VoInvalidXMLException with the first error and its place
    void validate(VoIODevice& device) const;
    /// As validate() with the result as a value; the first error is logged (category "xml", information). Still throws
    /// when the file cannot be read.
    bool isValid(const VoFilePath& file) const;

    /// The errors of a file, in document order; none for a valid one. The schema component stops at the first error, so
    /// each further one is looked for with the elements left out that had one before: an error may be the absence of an
    /// earlier one's element beside it. At most 100; of a document that is not well formed, and of one in another
    /// encoding than UTF-8, only the first.
    VoDeque<Error> errors(const VoFilePath& file) const;
    /// The same of the rest of a device's content.
    VoDeque<Error> errors(VoIODevice& device) const;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
