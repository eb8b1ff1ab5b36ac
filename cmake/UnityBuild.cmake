# For builds with CMAKE_UNITY_BUILD, which compile several sources as one: a whole build takes a quarter of the time, so
# the sanitizers' builds are made that way. The sources below have names of local functions in common with others of
# their folder and are compiled by themselves; a "redefinition" in a unity source asks for a line here or another name.
set(vocore_compiled_alone
    src/Application/detail/VariantText.cpp
    src/Core/VoVariant.cpp
    src/Core/detail/Sha3Batch.cpp
    src/Documents/VoZipper.cpp
    src/Documents/detail/HTMLTable.cpp
    src/Documents/detail/MiniZip.cpp
    src/Download/VoTransferRate.cpp
    src/Download/detail/VoSingleDownload.cpp
    src/FileSystem/VoTemporaryFile.cpp
    src/FileSystem/detail/FileLock_posix.cpp
    src/FileSystem/detail/NativeNames_posix.cpp
    src/FileSystem/detail/NativeNames_win.cpp
    src/Gui/VoMimeData.cpp
    src/IO/detail/BufferedFile.cpp
    src/Misc/XMLReport/detail/SensitivityReport.cpp
    src/Misc/XMLReport/detail/WorstCaseReport.cpp
    src/Shell/VoShellValue.cpp
    src/Shell/detail/FileFunctions.cpp
    src/Shell/detail/PackageFunctions.cpp
    src/Subsystem/Registry.cpp
    src/Threading/detail/CallbackList.cpp
    src/Time/detail/DurationText.cpp
    src/Updater/AdvertisedPackages.cpp
    src/Updater/ReleaseKeys.cpp
    src/Updater/ReleaseManifest.cpp
    src/Updater/ReleaseSigner.cpp
    src/Updater/TrustedReleases.cpp
    src/Updater/detail/documents/PackageValidator.cpp
    src/Updater/detail/files/HeldTree.cpp
    src/Updater/detail/install/PatchChoice.cpp
    src/Updater/detail/install/UpdatePlan.cpp
    src/Updater/detail/install/UpdateTransaction.cpp
    src/Updater/detail/operations/StagedReleases.cpp
    src/Updater/detail/publish/ChunkWriter.cpp
    src/Updater/detail/publish/Clearance.cpp
    src/Updater/detail/registry/TrustPin.cpp
    src/XML/detail/XMLTree.cpp
    tests/Core/VoByteBufferTest.cpp
    tests/Core/VoComparableStringTest.cpp
    tests/Core/VoStringTest.cpp
    tests/Core/VoStringViewTest.cpp
    tests/Core/VoUUIDTest.cpp
    tests/Documents/SpreadsheetTest.cpp
    tests/Download/VoDownloadManagerTest.cpp
    tests/Maths/SimplexTest.cpp
    tests/Updater/PackageDocumentsTest.cpp
    tests/Updater/PackageInstallerTest.cpp
    tests/Updater/PackageVerifierTest.cpp
    tests/Updater/ReleaseSignerTest.cpp
    tests/Updater/RemoteInstallTest.cpp
    tests/Updater/StagedReleasesTest.cpp
    tests/Updater/TrustTest.cpp
    tests/support/TestMain.cpp # an object of its own in its archive: some programs have another main function
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
    tools/vo/screen/UpdateProgress.cpp
)
list(TRANSFORM vocore_compiled_alone PREPEND "${PROJECT_SOURCE_DIR}/")
file(GLOB vocore_compiled_alone_commands "${PROJECT_SOURCE_DIR}/tools/vo/commands/*.cpp") # each has a Run()

# So that little is compiled for each fault that scripts/mutate.py puts into one of them.
set(VOCORE_COMPILED_ALONE "" CACHE STRING "Folders whose sources a unity build compiles by themselves: src/Misc, tools")
foreach(folder IN LISTS VOCORE_COMPILED_ALONE)
    file(GLOB_RECURSE sources "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
    list(APPEND vocore_compiled_alone ${sources})
endforeach()

# Keeps them out of the unity sources of the targets of this directory.
function(vocore_compile_alone)
    if(CMAKE_UNITY_BUILD)
        set_source_files_properties(${vocore_compiled_alone} ${vocore_compiled_alone_commands}
            PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    endif()
endfunction()
