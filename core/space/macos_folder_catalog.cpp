// The folder catalog's macOS rows: kept so that a machine reading from that system judges the
// same; not live on Linux. Sentences are the product's own voice.
#include <array>

#include "core/space/folder_catalog_rows.h"

namespace pellwin::FolderCatalog {
namespace {

using enum StorageCategory;

constexpr auto kRows = std::to_array<FolderEntry>({
    row("Library", appData, "Data that your apps and macOS keep for you"),
    row("Library/Application Support", appData,
        "Settings, databases and downloaded content that apps keep. Deleting things here can "
        "break an app"),
    row("Library/Containers", appData,
        "Data for apps from the App Store. Deleting it resets the app"),
    row("Library/Group Containers", appData, "Data shared between an app and its extensions"),
    row("Library/Preferences", appData, "Settings files that apps read when they open"),
    row("Library/Mail", appData, "Your Mail messages and attachments kept on this Mac"),
    row("Library/Messages", appData, "Your Messages history and attachments"),
    row("Library/Keychains", appData, "Your saved passwords and keys. Never remove these"),
    row("Library/Mobile Documents", yourFiles, "Files from iCloud Drive that are kept on this Mac"),
    row("Library/Application Support/MobileSync", appData, "Backups of your iPhone and iPad"),
    row("Library/Application Support/Google/Chrome", appData,
        "Chrome's bookmarks, history, extensions and saved sites"),
    row("Library/Application Support/Code", developer,
        "Visual Studio Code's settings and workspace state"),
    row("Library/Application Support/Slack", appData, "Slack's downloaded files and settings"),
    row("Library/Application Support/Claude", appData,
        "The Claude app's conversations and settings"),
    row("Library/Application Support/Tovrin", appData,
        "Tovrin's own history. Clear it from Settings"),
    row("Library/Caches", other, "Temporary files that apps rebuild when they need them",
        kCleanable),
    row("Library/Logs", other, "Diagnostic logs that apps and macOS write", kCleanable),
    row("Library/Caches/Homebrew", developer, "Downloads Homebrew kept from past installs",
        kCleanable),
    row("Library/Caches/Yarn", developer, "Packages Yarn downloaded before", kCleanable),
    row("Library/Caches/pip", developer, "Python packages pip downloaded before", kCleanable),
    row("Library/Caches/CocoaPods", developer, "Libraries CocoaPods downloaded for Xcode projects",
        kCleanable),
    row("Library/Caches/go-build", developer, "Compiled pieces Go reuses between builds",
        kCleanable),
    row("Library/pnpm/store", developer, "Packages pnpm shares between projects", kCleanable),
    row("Library/Developer", developer, "Xcode's tools, simulators and build files"),
    row("Library/Developer/Xcode/DerivedData", developer,
        "Build output Xcode makes again on the next build", kCleanable),
    row("Library/Developer/Xcode/iOS DeviceSupport", developer,
        "Files Xcode copied from each iPhone or iPad you connected", kCleanable),
    row("Library/Developer/Xcode/Archives", developer, "Builds you archived for release"),
    row("Library/Developer/CoreSimulator", developer,
        "The iPhone and iPad simulators and their apps"),
    row("Library/Containers/com.docker.docker", developer,
        "Docker's disk image. Clear it with docker system prune"),
    // On Linux this folder is the XDG cache, whose own row is found first.
    row(".cache", developer, "Caches that command line tools keep", kCleanable),
    row(".orbstack", developer, "OrbStack's virtual machines and images"),
    row(".Trash", other, "Files you moved to the Trash. Emptying it frees the space", kCleanable),
    row("Movies", yourFiles, "Videos and movie projects"),
    row("Music/Music", yourFiles, "Your Apple Music library"),
    row("Pictures/Photos Library.photoslibrary", yourFiles,
        "Your Photos library, with every original"),
    // Folders outside home.
    row("/System", system, "macOS itself. It can't be changed"),
    row("/Library", system, "Files shared by every user on this Mac"),
    row("/Applications", system, "Apps installed for everyone on this Mac"),
    row("/private/var", system, "System caches, logs and temporary files"),
    row("/private/var/vm", system, "Memory macOS moved to disk, and the files it keeps for sleep"),
});

}  // namespace

std::span<const FolderEntry> macosRows() { return kRows; }

}  // namespace pellwin::FolderCatalog
