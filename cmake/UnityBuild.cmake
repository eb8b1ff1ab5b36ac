# For builds with CMAKE_UNITY_BUILD, which compile several sources as one: a whole build takes a quarter of the time, so
# the sanitizers' builds are made that way. The sources below have names of local functions in common with others of
# their folder and are compiled by themselves; a "redefinition" in a unity source asks for a line here or another name.
set(vocore_compiled_alone
    src/Core/detail/Sha3Batch.cpp
    src/Documents/VoCSVReader.cpp
    src/Documents/VoCSVWriter.cpp
    src/Documents/VoDataTableSpreadsheet.cpp
    src/Documents/VoOOXMLWriterDocument.cpp
    src/Documents/VoZipper.cpp
    src/Documents/detail/HTMLTable.cpp
    src/Documents/detail/MiniZip.cpp
    src/Download/VoTransferRate.cpp
    src/Download/detail/VoDownloadManagerImpl.cpp
    src/Download/detail/VoDownloadManagerInterface.cpp
    src/Download/detail/VoDownloadManagerMonitor.cpp
    src/Download/detail/VoDownloadMonitors.cpp
    src/Download/detail/VoSingleDownload.cpp
    src/FileSystem/VoAtomicFileWriter.cpp
    src/FileSystem/detail/NativeFile_posix.cpp
    src/FileSystem/detail/NativeFolder_posix.cpp
    src/Gui/VoMimeData.cpp
    src/Maths/VoSimplexAlgorithm.cpp
    src/Shell/detail/PackageFunctions.cpp
    src/Threading/detail/CallbackList.cpp
    src/Time/detail/DurationText.cpp
    src/Updater/AdvertisedPackages.cpp
    src/Updater/ReleaseKeys.cpp
    src/Updater/ReleaseManifest.cpp
    src/Updater/ReleaseSigner.cpp
    src/Updater/TrustedReleases.cpp
    src/Updater/detail/files/HeldTree.cpp
    src/Updater/detail/install/UpdateTransaction.cpp
    src/Updater/detail/publish/ChunkWriter.cpp
    src/Updater/detail/registry/TrustPin.cpp
    src/XML/VoXMLFactory.cpp
    src/XML/VoXMLRule.cpp
    src/XML/VoXMLStreamWriter.cpp
    src/XML/VoXMLValidator.cpp
    tests/Core/VoChecksumTest.cpp
    tests/Core/VoStringTest.cpp
    tests/Documents/SpreadsheetTest.cpp
    tests/Documents/ZipArchiveTest.cpp
    tests/Documents/ZipperTest.cpp
    tests/Download/DownloadFaultTest.cpp
    tests/Download/VoDownloadManagerTest.cpp
    tests/FileSystem/NativePathTest.cpp
    tests/FileSystem/VoAtomicFileWriterTest.cpp
    tests/FileSystem/VoFileSystemTest.cpp
    tests/FileSystem/VoFileTypeTest.cpp
    tests/FileSystem/VoTemporaryTest.cpp
    tests/IO/VoFileDeviceTest.cpp
    tests/IO/VoIODeviceTest.cpp
    tests/IO/VoStreamTest.cpp
    tests/Maths/SimplexTest.cpp
    tests/Maths/StatisticsTest.cpp
    tests/Misc/SensitivityTest.cpp
    tests/Subsystem/RegistryTest.cpp
    tests/Updater/ChunkWriterTest.cpp
    tests/Updater/FaultMatrixTest_linux.cpp
    tests/Updater/InstalledPackagesTest.cpp
    tests/Updater/PackageBuilderTest.cpp
    tests/Updater/PackageDocumentsTest.cpp
    tests/Updater/PackageInstallerTest.cpp
    tests/Updater/PackageVerifierTest.cpp
    tests/Updater/PackingOrderTest.cpp
    tests/Updater/ReleaseSignerTest.cpp
    tests/Updater/RemoteInstallTest.cpp
    tests/Updater/TrustFaultTest_linux.cpp
    tests/Updater/TrustTest.cpp
    tests/XML/XMLDomTest.cpp
    tests/XML/XMLElementWriterTest.cpp
    tests/XML/XMLFactoryTest.cpp
    tests/XML/XMLLoaderTest.cpp
    tests/XML/XMLObjectTest.cpp
    tests/XML/XMLReaderTest.cpp
    tests/XML/XMLRoundTripTest.cpp
    tests/XML/XMLValidatorTest.cpp
    tests/XML/XMLWriterTest.cpp
    tests/tools/SessionTest.cpp
)
list(TRANSFORM vocore_compiled_alone PREPEND "${PROJECT_SOURCE_DIR}/")
file(GLOB vocore_compiled_alone_commands "${PROJECT_SOURCE_DIR}/tools/vo/commands/*.cpp") # each has a Run()

# Keeps them out of the unity sources of the targets of this directory.
function(vocore_compile_alone)
    if(CMAKE_UNITY_BUILD)
        set_source_files_properties(${vocore_compiled_alone} ${vocore_compiled_alone_commands}
            PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    endif()
endfunction()
