#pragma once

/// @file
/// Names of the library's classes, for headers that only pass them by reference, pointer or return type.

class QByteArray;
class QIODevice;
class QString;
class QStringRef;
class QStringView;
class QUrl;

template <typename T>
class VoDeque;
template <typename A, typename B>
struct VoPair;
template <typename T>
class VoVector;
template <typename T>
class VoMatrix;
template <typename T>
class VoUniquePtr;
template <typename T>
class VoSharedPtr;
template <typename T>
class VoWeakPtr;
template <typename T>
class VoRef;
template <typename T>
class VoCRef;
template <typename T>
class VoStringConverter;
template <typename T>
class VoTemplatedObject;
template <typename T>
class VoBroadcaster;

class PrintfArg;
class TempString;
class YString;

class VoAbstractBroadcaster;
class VoAbstractPath;
class VoAbstractXMLElementReader;
class VoAbstractXMLStreamLoaderObject;
class VoAbstractXMLStreamWriterObject;
class VoByteArray;
class VoByteArrayOLD;
class VoByteBuffer;
class VoCaseSensitiveString;
class VoChecksum;
class VoComparableString;
class VoDataTable;
class VoDateTime;
class VoDirectoryPath;
class VoDirectoryPathFragment;
class VoDownloadSize;
class VoException;
class VoExceptionInterface;
class VoFileDevice;
class VoFileInputByteStream;
class VoFilePath;
class VoFileType;
class VoIODevice;
class VoObject;
struct VoPoint;
struct VoPointD;
class VoProperties;
class VoProperty;
class VoReceiver;
class VoStopFlag;
class VoString;
class VoStringView;
class VoTemporaryDir;
class VoTemporaryFile;
class VoTimeDuration;
class VoTimePoint;
class VoTransferRate;
class VoUrl;
class VoUUID;
class VoVariant;
class VoVersion;
class VoXMLAttribute;
class VoXMLAttributeSet;
class VoXMLElementReader;
class VoXMLElementWriter;
class VoXMLPath;
class VoXMLStreamElementLoader;
class VoXMLStreamLoader;
class VoXMLStreamReader;
class VoXMLStreamWriter;
class VoZipArchive;
class VoZipFile;
