// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Shared/Authorization/ShouldAuth.h"
#include "Shared/Files/ZQFileManagerArchives.h"
#include "Shared/Files/ZQFileManagerAsynchronousCopy.h"
#include "Shared/Files/ZQFileManagerAttributes.h"
#include "Shared/Files/ZQFileManagerDesktop.h"
#include "Shared/Files/ZQFileManagerPaths.h"

#include <QString>
#include <QStringList>

#include <chrono>

// Queries about files and volumes, the basic changes, and the smaller utilities that the classes
// below it declare. Nothing is kept, nothing throws. Any thread.
//
// A change comes in three forms, each true when done:
// - plain: with ShouldAuth::Yes;
// - with shouldAuth: tries with the caller's own rights; a failure is logged and, where that is
//   allowed, the change repeated through ZQAuthorization, whose result is the result;
// - with a time-out: the plain form, then waits until the change can be seen. The main thread
//   dispatches events meanwhile, others sleep in steps of 0.3 s.
// What is protected as a system directory itself is never trashed, removed or moved. Missing items
// count as trashed and removed. The entries of a folder are taken as they are: a symbolic link
// among them is an item of its own and never followed.
class ZQFileManager : public ZQFileManagerPaths,
                      public ZQFileManagerAttributes,
                      public ZQFileManagerArchives,
                      public ZQFileManagerDesktop,
                      public ZQFileManagerAsynchronousCopy {
public:
    ZQFileManager() = delete;

    /// fileExistsAtPath: follows links.
    static bool fileExistsAtPath(const QString &path);
    /// isDirectoryAtPath: follows links.
    static bool isDirectoryAtPath(const QString &path);
    /// isPackageAtPath:
    /// Whether the desktop shows the folder as one file.
    static bool isPackageAtPath(const QString &path);
    /// isSymbolicLinkAtPath:
    static bool isSymbolicLinkAtPath(const QString &path);
    /// isVolumeMountedForPath:
    /// False only where the path begins with "/Volumes" and its first three components lead
    /// nowhere.
    static bool isVolumeMountedForPath(const QString &path);
    /// isDriveMountedForPath:
    /// The same for "/Volumes/", with a console line "mountpoint: %@" for each test.
    static bool isDriveMountedForPath(const QString &path);
    /// isFolderEmpty:
    /// Whether a folder holds nothing but ".DS_Store", "Icon\r" and folders that are empty by this
    /// rule. An unreadable folder is empty.
    static bool isFolderEmpty(const QString &path);
    /// fileSize:
    /// Bytes; of a directory the sum over its contents, recursively. 0 where nothing can be read.
    static quint64 fileSize(const QString &path);

    /// trashFile:shouldAuth:
    /// Moves to ZQLocalPaths::trashDirectory(). A failure with one's own rights is not logged.
    static bool trashFile(const QString &path, ShouldAuth shouldAuth);
    /// trashFile:
    static bool trashFile(const QString &path);
    /// trashFile:timeout:
    static bool trashFile(const QString &path, std::chrono::seconds timeout);
    /// trashDirectoryContents:shouldAuth:
    /// Trashes every entry of the folder, whether or not another failed.
    static bool trashDirectoryContents(const QString &folder, ShouldAuth shouldAuth);
    /// trashDirectoryContents:
    static bool trashDirectoryContents(const QString &folder);
    /// trashFilesOfType:inFolder:
    /// Trashes the files with that extension, in either case, in the folder and all below it. The
    /// paths for which that was tried; none for nil, which is no extension.
    static QStringList trashFilesOfType(const QString &extension, const QString &folder);
    /// trashFilesNamed:inFolder:
    /// The same with files of exactly that name.
    static QStringList trashFilesNamed(const QString &name, const QString &folder);

    /// removeFile:shouldAuth:
    static bool removeFile(const QString &path, ShouldAuth shouldAuth);
    /// removeFile:
    static bool removeFile(const QString &path);
    /// removeFile:timeout:
    static bool removeFile(const QString &path, std::chrono::seconds timeout);
    /// removeFolderIfEmpty:
    /// False where isFolderEmpty() is.
    static bool removeFolderIfEmpty(const QString &folder);

    /// createDirectory:shouldAuth:
    /// Makes the folders above it, too. Refused where isDriveMountedForPath() is false.
    static bool createDirectory(const QString &path, ShouldAuth shouldAuth);
    /// createDirectory:
    static bool createDirectory(const QString &path);
    /// createDirectory:timeout:
    static bool createDirectory(const QString &path, std::chrono::seconds timeout);
    /// createDirectoryStructure:destination:
    /// Makes the path itself, or for a file or package the folder that it is in, anew under the
    /// destination. The path of that folder, also where it could not be made.
    static QString createDirectoryStructure(const QString &path, const QString &destination);

    /// copyFile:toPath:shouldAuth:
    /// Nothing is replaced with the caller's own rights.
    static bool copyFile(const QString &source, const QString &destination, ShouldAuth shouldAuth);
    /// copyFile:toPath:
    static bool copyFile(const QString &source, const QString &destination);
    /// copyFile:toPath:timeout:
    static bool copyFile(const QString &source, const QString &destination,
                         std::chrono::seconds timeout);
    /// copyContentsOfDirectory:toPath:timeout:
    /// Copies every entry into the destination, which must exist; ends with the first failure. The
    /// time-out is for each entry.
    static bool copyContentsOfDirectory(const QString &source, const QString &destination,
                                        std::chrono::seconds timeout);

    /// moveFile:toPath:shouldAuth:
    /// Nothing is replaced with the caller's own rights. A name whose case alone changes goes
    /// through another name.
    static bool moveFile(const QString &source, const QString &destination, ShouldAuth shouldAuth);
    /// moveFile:toPath:
    static bool moveFile(const QString &source, const QString &destination);
    /// moveFile:toPath:timeout:
    static bool moveFile(const QString &source, const QString &destination,
                         std::chrono::seconds timeout);
};
