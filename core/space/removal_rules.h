// Whether a path may be deleted at all, and why not. Pure functions over path components: no
// disk access, so callers that act on the disk check links and resolved paths themselves and
// pass them to `verdict`. Nothing outside the home folder is ever allowed.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin {

struct RemovalRefusal {
  std::string reason{};  // the sentence shown to the user
  friend bool operator==(const RemovalRefusal&, const RemovalRefusal&) = default;
};

// What this machine protects beyond the fixed rules, as absolute paths.
struct RemovalGuards {
  // Never removed, nor anything inside them: at least Tovrin's data folders.
  std::vector<std::string> kept{};
  // The user's own folders as the desktop names them (the XDG user folders, often localised,
  // such as ~/Dokumente or a Music folder moved to ~/Media/Music): never removed themselves,
  // though what is inside them may go.
  std::vector<std::string> mainFolders{};
  friend bool operator==(const RemovalGuards&, const RemovalGuards&) = default;
};

namespace RemovalRules {

// The guards with each path split by `components`, as the rules compare them.
struct SplitGuards {
  std::vector<std::vector<std::string>> kept{};
  std::vector<std::vector<std::string>> mainFolders{};
};

// Lower-case folder names. The first four sets are the macOS layout, kept in force on Linux.
inline constexpr std::array<std::string_view, 9> topLevelFolders = {
    "desktop", "documents", "downloads", "library",     "movies",
    "music",   "pictures",  "public",    "applications"};
inline constexpr std::array<std::string_view, 6> sharedLibraryFolders = {
    "application support", "containers",       "group containers",
    "preferences",         "mobile documents", "cloudstorage"};
inline constexpr std::array<std::string_view, 6> systemLibraryFolders = {
    "accounts", "identityservices", "daemon containers", "security", "biome", "trial"};
inline constexpr std::array<std::string_view, 8> perAppLibraryFolders = {
    "application support",     "containers",   "group containers", "preferences",
    "saved application state", "httpstorages", "webkit",           "cookies"};

// The XDG user folders at the top of home that the macOS list lacks.
inline constexpr std::array<std::string_view, 2> linuxTopLevelFolders = {"templates", "videos"};

// Home-relative folders that as a whole hold every app's settings and data. An app's own folder
// inside them may go.
inline constexpr std::array<std::string_view, 7> linuxSharedAppFolders = {
    ".config", ".local", ".local/share", ".local/state", ".var", ".var/app", "snap"};

// Where each app keeps its own folder on Linux (home-relative), for the app-data caution.
inline constexpr std::array<std::string_view, 5> linuxPerAppFolders = {
    ".config", ".local/share", ".local/state", ".var/app", "snap"};

// Folders in those places that belong to the desktop rather than to one app.
inline constexpr std::array<std::string_view, 12> linuxDesktopFolders = {
    "applications", "fonts",     "icons",   "mime",          "themes",         "sounds",
    "backgrounds",  "autostart", "systemd", "environment.d", "user-dirs.dirs", "mimeapps.list"};

// Home-relative places that hold passwords, keys and tokens; they and everything inside them
// are refused.
inline constexpr std::array<std::string_view, 11> linuxKeyFolders = {
    ".pki",                   // the NSS certificate and key database
    ".password-store",        // pass
    ".local/share/keyrings",  // GNOME Keyring
    ".local/share/kwalletd",  // KDE Wallet
    ".gnome2/keyrings",       // GNOME Keyring before the XDG layout
    ".netrc",                 // logins for ftp, curl and git
    ".git-credentials",       // git's credential store
    ".aws",
    ".azure",
    ".kube",
    ".config/gcloud",
};

// The home trash of the freedesktop.org Trash, home-relative.
inline constexpr std::string_view linuxTrashFolder = ".local/share/trash";

// The path split on "/", empty and "." parts dropped (they name the same place), each part
// lower-cased.
[[nodiscard]] std::vector<std::string> components(std::string_view path);

// The rules for one path, with the guards already split.
// Whether a path is inside home is decided on exact, case-sensitive components (Linux file
// names are case-sensitive, so "/HOME/ann" is not inside "/home/ann"); every protection below
// that compares lower-case components, which only ever refuses more.
[[nodiscard]] std::optional<RemovalRefusal> refusal(std::string_view path, std::string_view home,
                                                    const SplitGuards& guards);

// The entry point for a path as the user sees it: a symbolic link is refused whatever it points
// to; otherwise the path and, when given and different, its resolved path are both tested.
[[nodiscard]] std::optional<RemovalRefusal> verdict(std::string_view path, std::string_view home,
                                                    bool isSymlink,
                                                    std::optional<std::string_view> resolvedPath,
                                                    const RemovalGuards& guards);

// One warning for a path, or none: the Photos and Music libraries, OrbStack, a project's change
// history, iCloud Drive, and an app's own data folder (in Library's per-app folders, or in the
// Linux places where each app keeps a folder). `appName`, when given, names the app; otherwise
// the folder catalog's entry or the folder's own name does.
[[nodiscard]] std::optional<std::string> caution(std::string_view path, std::string_view home,
                                                 std::optional<std::string_view> appName);

// The name to show for an app known only by its data folder's name: "org.mozilla.firefox" gives
// "Firefox", "google-chrome" gives "Google Chrome", "Slack" stays "Slack".
[[nodiscard]] std::string appDisplayName(std::string_view folderName);

[[nodiscard]] SplitGuards split(const RemovalGuards& guards);

}  // namespace RemovalRules
}  // namespace pellwin
