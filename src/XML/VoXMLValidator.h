#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>

#include <cstdint>
#include <memory>

/// Validates XML documents against one W3C XML schema (1.0).
///
/// Nothing but the schema and the local files that it includes is read: addresses elsewhere in the schema are left out,
/// as if the schema did not name them, and so are files that are not there; a document's own references to schemas are
/// not followed at all. The namespace of the prefix "xml" is known. Documents are read within the limits of
/// VoXMLStreamReader; more than 1000 levels are refused with VoStackLimitException, more than 2 GiB with
/// VoOverflowException. Schemas may have 256 levels and 250 documents.
///
/// Known limits: decimal numbers of more than 24 digits are refused, a fixed value must be written as in the schema,
/// and that IDs are unique and those referred to are there is checked of attributes, not of elements. Belongs to one
/// thread.
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
    /// @throws VoInvalidXMLSchemaException with the path and the first error with its place when it is no valid schema;
    /// an error of an included file begins with that file's path
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

    /// The errors of a file, in document order, the first of each element; none for a valid one. At most 100; of a
    /// document that is not well formed only the first.
    VoDeque<Error> errors(const VoFilePath& file) const;
    /// The same of the rest of a device's content.
    VoDeque<Error> errors(VoIODevice& device) const;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
