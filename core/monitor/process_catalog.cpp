#include "core/monitor/process_catalog.h"

#include <algorithm>
#include <array>
#include <map>
#include <unordered_map>
#include <vector>

#include "core/base/path_text.h"

namespace pellwin::ProcessCatalog {
namespace {

// How a row's pattern is compared with a process name. Kernel threads have no executable and
// carry a suffix that changes with the work they do ("kworker/u16:2+flush-259:0"), so their
// rows match by prefix and only for kernel threads.
enum class Match { exact, prefix, kernelPrefix };

struct Row {
  std::string_view pattern;
  Match match;
  KnownProcess entry;
};

constexpr KnownProcess kKernel{"Linux kernel",
                               "The core of Linux. Busy while it manages memory, disks and "
                               "devices for your apps."};
constexpr KnownProcess kMemoryDefrag{"Memory defragmenter",
                                     "Rearranges memory into larger blocks. Busy for a while "
                                     "after heavy memory use, then settles."};
constexpr KnownProcess kInterrupts{"Interrupt handling",
                                   "Handles signals from devices such as the network and disks. "
                                   "Busy during heavy network or disk traffic."};
constexpr KnownProcess kFileSystem{"File system",
                                   "Keeps the file system's records safe while data is written. "
                                   "Busy while apps write a lot to disk."};
constexpr KnownProcess kDiskEncryption{"Disk encryption",
                                       "Encrypts and decrypts data on its way to and from the "
                                       "disk. Busy while apps read or write a lot."};
constexpr KnownProcess kKWin{"KDE window manager",
                             "Draws windows and effects for KDE Plasma. More windows, displays "
                             "and effects make it busier."};
constexpr KnownProcess kFileIndexer{"File search indexer",
                                    "Keeps the search index of your files up to date. Busy after "
                                    "many files change or on first login, then settles."};
constexpr KnownProcess kContentIndexer{"Search content reader",
                                       "Reads files so search can find what is inside them. Busy "
                                       "after many files change, then settles."};
constexpr KnownProcess kKdeIndexer{"KDE file search",
                                   "Keeps KDE's search index of your files up to date. Busy "
                                   "after many files change, then settles."};
constexpr KnownProcess kSoftwareCenter{"Software center",
                                       "Checks for updates and downloads them in the background."};
constexpr KnownProcess kPackages{"Package manager",
                                 "Installs or updates system software. Uses the disk and CPU "
                                 "until the update finishes."};
constexpr KnownProcess kSnap{"Snap apps service",
                             "Installs and refreshes Snap apps in the background."};
constexpr KnownProcess kFlatpak{"Flatpak", "Installs and updates Flatpak apps."};
constexpr KnownProcess kFirmware{"Firmware updates",
                                 "Checks for and installs firmware updates for your devices."};
constexpr KnownProcess kPipeWire{"Audio and video server",
                                 "Plays and records sound and passes screen and camera streams "
                                 "between apps. Busy while media plays."};
constexpr KnownProcess kBluetooth{"Bluetooth",
                                  "Runs Bluetooth devices such as headphones, keyboards and "
                                  "mice."};
constexpr KnownProcess kNetworking{"Networking", "Keeps Wi-Fi, wired and mobile connections up."};
constexpr KnownProcess kNameLookup{"Name lookup",
                                   "Finds the addresses of websites and of printers and devices "
                                   "nearby."};
constexpr KnownProcess kSystemLog{"System log",
                                  "Collects log messages from apps and the system. Busy when "
                                  "something logs a lot."};
constexpr KnownProcess kCrashReporter{"Crash reporter",
                                      "Collects details after an app crashed. Busy for a moment, "
                                      "then settles."};
constexpr KnownProcess kMessages{"App messages", "Passes messages between apps and the system."};
constexpr KnownProcess kContainers{"Containers",
                                   "Runs containers. The work itself happens in the containers' "
                                   "own processes."};
constexpr KnownProcess kFileManagerServices{"File manager services",
                                            "Connect network shares, phones and cameras to the "
                                            "file manager."};
constexpr KnownProcess kInputMethods{"Input methods",
                                     "Handles keyboard layouts, input methods and emoji typing."};
constexpr KnownProcess kPortals{"App portals",
                                "Let apps open files, take screenshots and share the screen "
                                "safely."};
constexpr KnownProcess kSettingsServices{"Desktop settings services",
                                         "Apply your settings and handle media keys, power and "
                                         "clean-up in the background."};
constexpr KnownProcess kPasswords{"Password storage",
                                  "Keeps your passwords and keys unlocked for apps."};
constexpr KnownProcess kThumbnails{"Thumbnail maker",
                                   "Makes previews of pictures and videos. Busy after you open a "
                                   "large folder, then settles."};
constexpr KnownProcess kMaintenance{"Background maintenance",
                                    "Rebuilds the indexes of file names and manual pages, "
                                    "usually once a day or after updates."};
constexpr KnownProcess kDiskMaintenance{"Disk maintenance",
                                        "Keeps disks healthy with regular trims, checks and health "
                                        "readings."};
constexpr KnownProcess kPrinting{"Printing", "Runs the print queue and finds printers nearby."};
constexpr KnownProcess kPower{"Power management",
                              "Handles battery, power modes and keeping the processor cool."};
constexpr KnownProcess kMemoryGuard{"Memory guard",
                                    "Watches memory and closes apps before the system stops "
                                    "responding."};
constexpr KnownProcess kSystemServices{"System services",
                                       "Handle permissions, user accounts, color profiles, "
                                       "location and accessibility."};

constexpr auto kRows = std::to_array<Row>({
    {"kernel_task",
     Match::exact,
     {"macOS kernel",
      "The core of macOS. High CPU here usually means macOS is cooling the Mac down by holding "
      "work back."}},
    {"WindowServer",
     Match::exact,
     {"Screen drawing",
      "Draws everything on your displays. More windows, displays and animations make it busier."}},
    {"VTDecoderXPCService",
     Match::exact,
     {"Video decoder",
      "Decodes video for apps. Usually left over from a video call or stream. Closing the app that "
      "played the video frees it."}},
    {"VTEncoderXPCService",
     Match::exact,
     {"Video encoder",
      "Encodes video for screen sharing, recording or calls. Ending the call or recording frees "
      "it."}},
    {"mds",
     Match::exact,
     {"Spotlight",
      "Keeps the Spotlight search index up to date. Busy after big file changes or updates, then "
      "settles."}},
    {"mds_stores",
     Match::exact,
     {"Spotlight index",
      "Stores the Spotlight search index. Busy after big file changes or updates, then settles."}},
    {"mdworker_shared",
     Match::exact,
     {"Spotlight indexer",
      "Reads files so Spotlight can find them. Busy after big file changes, then settles."}},
    {"corespotlightd",
     Match::exact,
     {"Spotlight for apps", "Indexes content from apps so Spotlight can find it."}},
    {"backupd", Match::exact, {"Time Machine", "Runs Time Machine backups. Busy during a backup."}},
    {"photoanalysisd",
     Match::exact,
     {"Photos analysis",
      "Scans your photo library for faces and scenes. Runs mostly while the Mac is idle and "
      "plugged in."}},
    {"photolibraryd",
     Match::exact,
     {"Photos library", "Manages the Photos library. Busy while importing or syncing."}},
    {"mediaanalysisd",
     Match::exact,
     {"Media analysis",
      "Analyzes photos and videos for search and Live Text. Runs mostly while idle."}},
    {"cloudd",
     Match::exact,
     {"iCloud sync", "Syncs iCloud data. Busy while a lot of data uploads or downloads."}},
    {"bird",
     Match::exact,
     {"iCloud Drive", "Syncs iCloud Drive files. Busy while files upload or download."}},
    {"fileproviderd",
     Match::exact,
     {"File sync", "Syncs cloud folders such as iCloud Drive, Dropbox and Google Drive."}},
    {"softwareupdated", Match::exact, {"Software Update", "Downloads and prepares macOS updates."}},
    {"coreduetd",
     Match::exact,
     {"Usage tracking", "Tracks app and device activity for Screen Time and suggestions."}},
    {"trustd",
     Match::exact,
     {"Certificate checks", "Checks security certificates for apps and websites."}},
    {"syspolicyd",
     Match::exact,
     {"App security checks",
      "Checks apps before they open. Busy after installing or updating apps."}},
    {"XprotectService",
     Match::exact,
     {"Malware scan", "Scans files for known malware. Busy after downloads, then settles."}},
    {"launchd",
     Match::exact,
     {"Process launcher", "Starts and stops every other process on the Mac."}},
    {"logd", Match::exact, {"System log", "Collects log messages from apps and macOS."}},
    {"sharingd",
     Match::exact,
     {"AirDrop and Handoff", "Runs AirDrop, Handoff and other sharing features."}},
    {"bluetoothd",
     Match::exact,
     {"Bluetooth", "Runs Bluetooth devices such as headphones, keyboards and mice."}},
    {"coreaudiod", Match::exact, {"Audio", "Plays and records sound for every app."}},
    {"powerd", Match::exact, {"Power management", "Handles sleep, battery and power settings."}},
    {"distnoted", Match::exact, {"App messages", "Passes messages between apps and macOS."}},
    {"nsurlsessiond",
     Match::exact,
     {"Background downloads", "Downloads files in the background for apps and macOS."}},
    {"com.apple.WebKit.WebContent",
     Match::exact,
     {"Web page",
      "Renders a web page for Safari or an app that shows web content. Closing tabs frees it."}},
    {"com.apple.WebKit.GPU",
     Match::exact,
     {"Web graphics", "Draws graphics and video for web pages."}},

    // Linux: the kernel's own threads.
    {"kthreadd", Match::exact, kKernel},
    {"kswapd",
     Match::kernelPrefix,
     {"Memory reclaimer",
      "Frees memory when it runs low. Staying busy means your apps want more memory than there "
      "is."}},
    {"kcompactd", Match::kernelPrefix, kMemoryDefrag},
    {"khugepaged", Match::exact, kMemoryDefrag},
    {"kworker/",
     Match::kernelPrefix,
     {"Kernel workers",
      "Run background jobs of the kernel, such as writing data to disk and handling devices. "
      "Usually settles on its own."}},
    {"ksoftirqd/", Match::kernelPrefix, kInterrupts},
    {"irq/", Match::kernelPrefix, kInterrupts},
    {"jbd2/", Match::kernelPrefix, kFileSystem},
    {"btrfs-", Match::kernelPrefix, kFileSystem},
    {"xfsaild/", Match::kernelPrefix, kFileSystem},
    {"txg_sync", Match::exact, kFileSystem},
    {"z_", Match::kernelPrefix, kFileSystem},
    {"kcryptd", Match::kernelPrefix, kDiskEncryption},
    {"dmcrypt_write", Match::kernelPrefix, kDiskEncryption},

    // Linux: display and desktop.
    {"Xorg",
     Match::exact,
     {"Display server",
      "Draws windows on your screen. More windows, displays and animations make it busier."}},
    {"Xwayland",
     Match::exact,
     {"Older app support",
      "Runs older X11 apps in your desktop. Busy while those apps draw a lot."}},
    {"gnome-shell",
     Match::exact,
     {"GNOME desktop",
      "Draws the desktop, windows and animations, and runs shell extensions. When it is busy, "
      "everything feels slow; an extension is a common cause."}},
    {"kwin_wayland", Match::exact, kKWin},
    {"kwin_x11", Match::exact, kKWin},
    {"plasmashell",
     Match::exact,
     {"KDE desktop",
      "Runs the panels, desktop and widgets of KDE Plasma. A widget can keep it busy."}},

    // Linux: search indexers.
    {"localsearch-3", Match::exact, kFileIndexer},
    {"tracker-miner-fs-3", Match::exact, kFileIndexer},
    {"localsearch-extractor-3", Match::exact, kContentIndexer},
    {"tracker-extract-3", Match::exact, kContentIndexer},
    {"baloo_file", Match::exact, kKdeIndexer},
    {"baloo_file_extractor", Match::exact, kKdeIndexer},

    // Linux: software and firmware updates.
    {"packagekitd",
     Match::exact,
     {"Software updates",
      "Downloads and installs updates for the software center. Busy while an update runs."}},
    {"gnome-software", Match::exact, kSoftwareCenter},
    {"plasma-discover", Match::exact, kSoftwareCenter},
    {"DiscoverNotifier", Match::exact, kSoftwareCenter},
    {"apt", Match::exact, kPackages},
    {"apt-get", Match::exact, kPackages},
    {"apt.systemd.daily", Match::exact, kPackages},
    {"dpkg", Match::exact, kPackages},
    {"unattended-upgr", Match::prefix, kPackages},
    {"dnf", Match::exact, kPackages},
    {"rpm", Match::exact, kPackages},
    {"zypper", Match::exact, kPackages},
    {"pacman", Match::exact, kPackages},
    {"snapd", Match::exact, kSnap},
    {"snap", Match::exact, kSnap},
    {"flatpak", Match::exact, kFlatpak},
    {"flatpak-", Match::prefix, kFlatpak},
    {"fwupd", Match::exact, kFirmware},
    {"fwupdmgr", Match::exact, kFirmware},

    // Linux: sound, Bluetooth and networking.
    {"pipewire", Match::exact, kPipeWire},
    {"pipewire-pulse", Match::exact, kPipeWire},
    {"wireplumber",
     Match::exact,
     {"Audio session manager", "Decides which speakers, microphones and cameras apps use."}},
    {"pulseaudio", Match::exact, {"Audio server", "Plays and records sound for every app."}},
    {"obexd", Match::exact, kBluetooth},
    {"NetworkManager", Match::exact, kNetworking},
    {"wpa_supplicant", Match::exact, kNetworking},
    {"iwd", Match::exact, kNetworking},
    {"ModemManager", Match::exact, kNetworking},
    {"systemd-resolved", Match::exact, kNameLookup},
    {"avahi-daemon", Match::exact, kNameLookup},

    // Linux: the service manager, logs and crash reports.
    {"systemd",
     Match::exact,
     {"Service manager",
      "Starts and stops the system's services and the background tasks of your session."}},
    {"systemd-logind",
     Match::exact,
     {"Login manager", "Keeps track of who is logged in, and handles sleep and the power button."}},
    {"systemd-udevd", Match::exact, {"Device manager", "Sets up devices as they are plugged in."}},
    {"dbus-daemon", Match::exact, kMessages},
    {"dbus-broker", Match::exact, kMessages},
    {"systemd-journald", Match::exact, kSystemLog},
    {"rsyslogd", Match::exact, kSystemLog},
    {"systemd-coredump", Match::exact, kCrashReporter},
    {"apport", Match::exact, kCrashReporter},
    {"whoopsie", Match::exact, kCrashReporter},
    {"abrt-", Match::prefix, kCrashReporter},
    {"systemd-oomd", Match::exact, kMemoryGuard},
    {"earlyoom", Match::exact, kMemoryGuard},

    // Linux: container daemons.
    {"dockerd", Match::exact, kContainers},
    {"containerd", Match::exact, kContainers},
    {"containerd-shim", Match::prefix, kContainers},
    {"podman", Match::exact, kContainers},
    {"conmon", Match::exact, kContainers},

    // Linux: desktop services.
    {"gvfsd", Match::exact, kFileManagerServices},
    {"gvfsd-", Match::prefix, kFileManagerServices},
    {"gvfs-", Match::prefix, kFileManagerServices},
    {"udisksd", Match::exact, {"Disk manager", "Mounts drives and checks their health."}},
    {"evolution-",
     Match::prefix,
     {"Calendar and contacts", "Keeps calendars and contacts in sync for your apps."}},
    {"goa-daemon", Match::exact, {"Online accounts", "Keeps your online accounts signed in."}},
    {"goa-identity-service",
     Match::exact,
     {"Online accounts", "Keeps your online accounts signed in."}},
    {"akonadi",
     Match::prefix,
     {"KDE mail and calendar storage",
      "Stores and syncs mail, calendars and contacts for KDE apps."}},
    {"ibus-", Match::prefix, kInputMethods},
    {"fcitx5", Match::exact, kInputMethods},
    {"xdg-desktop-portal", Match::prefix, kPortals},
    {"xdg-document-portal", Match::exact, kPortals},
    {"xdg-permission-store", Match::exact, kPortals},
    {"gsd-", Match::prefix, kSettingsServices},
    {"kded5", Match::exact, kSettingsServices},
    {"kded6", Match::exact, kSettingsServices},
    {"gnome-keyring-daemon", Match::exact, kPasswords},
    {"kwalletd", Match::prefix, kPasswords},
    {"gpg-agent", Match::exact, kPasswords},
    {"ssh-agent", Match::exact, kPasswords},
    {"tumblerd", Match::exact, kThumbnails},
    {"ffmpegthumbnailer", Match::exact, kThumbnails},
    {"totem-video-thumbnailer", Match::exact, kThumbnails},
    {"evince-thumbnailer", Match::exact, kThumbnails},
    {"gdk-pixbuf-thumbnailer", Match::exact, kThumbnails},
    {"updatedb", Match::prefix, kMaintenance},
    {"plocate", Match::exact, kMaintenance},
    {"mandb", Match::exact, kMaintenance},
    {"fstrim", Match::exact, kDiskMaintenance},
    {"e2scrub", Match::prefix, kDiskMaintenance},
    {"smartd", Match::exact, kDiskMaintenance},
    {"cupsd", Match::exact, kPrinting},
    {"cups-browsed", Match::exact, kPrinting},
    {"upowerd", Match::exact, kPower},
    {"power-profiles-daemon", Match::exact, kPower},
    {"tuned", Match::exact, kPower},
    {"thermald", Match::exact, kPower},
    {"irqbalance", Match::exact, kPower},
    {"polkitd", Match::exact, kSystemServices},
    {"accounts-daemon", Match::exact, kSystemServices},
    {"colord", Match::exact, kSystemServices},
    {"geoclue", Match::exact, kSystemServices},
    {"rtkit-daemon", Match::exact, kSystemServices},
    {"at-spi-bus-launcher", Match::exact, kSystemServices},
    {"at-spi2-registryd", Match::exact, kSystemServices},
});

const std::unordered_map<std::string_view, const Row*>& exactRows() {
  static const auto rows = [] {
    std::unordered_map<std::string_view, const Row*> index;
    for (const Row& row : kRows) {
      if (row.match == Match::exact) index.emplace(row.pattern, &row);
    }
    return index;
  }();
  return rows;
}

// A family's key is its pattern without the separator that ends it: "kworker/" → "kworker".
std::string_view familyKey(std::string_view pattern) {
  while (!pattern.empty() &&
         (pattern.back() == '/' || pattern.back() == '-' || pattern.back() == '_')) {
    pattern.remove_suffix(1);
  }
  return pattern;
}

// Rows that cover a family of names, by the first character of their pattern, so that a
// name is compared only with the few patterns that could start it.
const std::array<std::vector<const Row*>, 256>& familyRows() {
  static const auto rows = [] {
    std::array<std::vector<const Row*>, 256> byFirst;
    for (const Row& row : kRows) {
      if (row.match != Match::exact) {
        byFirst[static_cast<unsigned char>(row.pattern.front())].push_back(&row);
      }
    }
    return byFirst;
  }();
  return rows;
}

// Rows of one entry are one part of the system to the user (kcompactd and khugepaged are both
// the memory defragmenter), so they share the key of the entry's first row.
std::string_view sharedKey(const KnownProcess& entry) {
  static const auto keys = [] {
    std::map<std::pair<std::string_view, std::string_view>, std::string_view> byEntry;
    for (const Row& row : kRows) {
      byEntry.emplace(std::pair(row.entry.name, row.entry.explanation),
                      row.match == Match::exact ? row.pattern : familyKey(row.pattern));
    }
    return byEntry;
  }();
  return keys.at({entry.name, entry.explanation});
}

std::optional<CatalogMatch> matchName(std::string_view name, bool kernelThread) {
  if (name.empty()) return std::nullopt;
  const auto& exact = exactRows();
  if (auto it = exact.find(name); it != exact.end()) {
    const KnownProcess& entry = it->second->entry;
    return CatalogMatch{.key = sharedKey(entry), .entry = entry};
  }
  for (const Row* row : familyRows()[static_cast<unsigned char>(name.front())]) {
    if (row->match == Match::kernelPrefix && !kernelThread) continue;
    if (name.starts_with(row->pattern)) {
      return CatalogMatch{.key = sharedKey(row->entry), .entry = row->entry};
    }
  }
  return std::nullopt;
}

bool startsWithAny(std::string_view path, std::span<const std::string_view> prefixes) {
  return std::ranges::any_of(prefixes, [&](std::string_view p) { return path.starts_with(p); });
}

// Compilers' internal programs, Java runtimes and LLVM's versioned tool folders.
constexpr std::array<std::string_view, 4> kDeveloperPrefixes = {
    "/usr/lib/gcc/", "/usr/libexec/gcc/", "/usr/lib/jvm/", "/usr/lib/llvm-"};
// Daemons and helpers that only the system starts; /usr/bin is left out on purpose because it
// holds the user's own tools and apps too.
constexpr std::array<std::string_view, 5> kSystemPrefixes = {
    "/usr/lib/systemd/", "/lib/systemd/", "/usr/libexec/", "/usr/sbin/", "/sbin/"};

struct NamedCategory {
  std::string_view name;
  AppCategory category;
};

constexpr auto kNamedCategories = std::to_array<NamedCategory>({
    {"Google Chrome", AppCategory::browsers},
    {"Safari", AppCategory::browsers},
    {"Firefox", AppCategory::browsers},
    {"Arc", AppCategory::browsers},
    {"Brave Browser", AppCategory::browsers},
    {"Microsoft Edge", AppCategory::browsers},
    {"Opera", AppCategory::browsers},
    {"Vivaldi", AppCategory::browsers},
    {"Orion", AppCategory::browsers},
    {"Zen", AppCategory::browsers},
    {"Claude", AppCategory::ai},
    {"ChatGPT", AppCategory::ai},
    {"Ollama", AppCategory::ai},
    {"LM Studio", AppCategory::ai},
    {"Perplexity", AppCategory::ai},
    {"Visual Studio Code", AppCategory::developer},
    {"Code", AppCategory::developer},
    {"Cursor", AppCategory::developer},
    {"Xcode", AppCategory::developer},
    {"Terminal", AppCategory::developer},
    {"iTerm", AppCategory::developer},
    {"iTerm2", AppCategory::developer},
    {"Warp", AppCategory::developer},
    {"Ghostty", AppCategory::developer},
    {"OrbStack", AppCategory::developer},
    {"Docker", AppCategory::developer},
    {"Simulator", AppCategory::developer},
    {"Android Studio", AppCategory::developer},
    {"IntelliJ IDEA", AppCategory::developer},
    {"Zed", AppCategory::developer},
    {"Postman", AppCategory::developer},
    {"TablePlus", AppCategory::developer},
    {"Slack", AppCategory::communication},
    {"zoom.us", AppCategory::communication},
    {"Microsoft Teams", AppCategory::communication},
    {"Discord", AppCategory::communication},
    {"Messages", AppCategory::communication},
    {"Mail", AppCategory::communication},
    {"WhatsApp", AppCategory::communication},
    {"Telegram", AppCategory::communication},
    {"FaceTime", AppCategory::communication},
    {"Microsoft Outlook", AppCategory::communication},
    {"Spotify", AppCategory::media},
    {"Music", AppCategory::media},
    {"TV", AppCategory::media},
    {"VLC", AppCategory::media},
    {"IINA", AppCategory::media},
    {"Photos", AppCategory::media},
    {"QuickTime Player", AppCategory::media},
    {"Final Cut Pro", AppCategory::media},
    {"OBS", AppCategory::media},
});

// Freedesktop menu categories, by the category they give; the first group that any of an
// entry's categories belongs to wins.
struct DesktopCategories {
  AppCategory category;
  std::array<std::string_view, 4> names;
};

constexpr auto kDesktopCategories = std::to_array<DesktopCategories>({
    {AppCategory::browsers, {"WebBrowser"}},
    {AppCategory::developer, {"Development", "IDE", "TerminalEmulator"}},
    {AppCategory::communication, {"Chat", "InstantMessaging", "Email", "VideoConference"}},
    {AppCategory::media, {"AudioVideo", "Audio", "Video", "Player"}},
    {AppCategory::system, {"System", "Settings"}},
});

constexpr auto kInterpreters =
    std::to_array<std::string_view>({"node", "python", "python3", "ruby", "java", "deno", "bun",
                                     "php", "perl", "go", "cargo", "swift"});

}  // namespace

std::optional<KnownProcess> known(std::string_view processName) {
  const auto& exact = exactRows();
  if (auto it = exact.find(processName); it != exact.end()) return it->second->entry;
  return std::nullopt;
}

std::optional<CatalogMatch> match(const ProcessSample& sample) {
  if (auto found = matchName(sample.name, sample.kernelThread)) return found;
  if (!sample.kernelThread && !sample.arguments.empty()) {
    const std::string_view first = lastPathComponent(sample.arguments.front());
    if (first != sample.name) {
      if (auto found = matchName(first, false)) return found;
    }
  }
  if (sample.kernelThread) return CatalogMatch{.key = "kthreadd", .entry = kKernel};
  return std::nullopt;
}

std::optional<CatalogMatch> systemPart(const ProcessSample& sample) {
  if (!sample.kernelThread && !sample.path.empty() && !isSystemLocation(sample.path)) {
    return std::nullopt;
  }
  return match(sample);
}

bool isSystemLocation(std::string_view path) {
  static constexpr std::array<std::string_view, 8> prefixes = {
      "/usr/", "/bin/", "/sbin/", "/lib/", "/lib64/", "/lib32/", "/snap/snapd/", "/System/"};
  return startsWithAny(path, prefixes) && !path.starts_with("/usr/local/");
}

bool isInterpreter(std::string_view processName) {
  if (processName.starts_with("python3.")) return true;
  // Every name in the set is at most 7 characters: most process names are ruled out at once.
  return processName.size() <= 7 &&
         std::ranges::find(kInterpreters, processName) != kInterpreters.end();
}

bool isFrameworkPython(std::string_view path) {
  return path.find("/Python.framework/") != std::string_view::npos &&
         !path.ends_with("/Python.app/Contents/MacOS/Python");
}

std::optional<AppCategory> categoryOfName(std::string_view name) {
  static const auto byName = [] {
    std::unordered_map<std::string_view, AppCategory> index;
    for (const NamedCategory& entry : kNamedCategories) index.emplace(entry.name, entry.category);
    return index;
  }();
  const auto found = byName.find(name);
  if (found == byName.end()) return std::nullopt;
  return found->second;
}

std::optional<AppCategory> categoryOfDesktopEntry(std::span<const std::string> desktopCategories) {
  for (const DesktopCategories& group : kDesktopCategories) {
    for (const std::string& category : desktopCategories) {
      if (!category.empty() && std::ranges::find(group.names, category) != group.names.end()) {
        return group.category;
      }
    }
  }
  return std::nullopt;
}

AppCategory category(std::string_view name, std::string_view processName, std::string_view path,
                     bool python, bool systemPart, std::span<const std::string> desktopCategories) {
  if (auto named = categoryOfName(name)) return *named;
  if (auto fromEntry = categoryOfDesktopEntry(desktopCategories)) return *fromEntry;
  if (isInterpreter(processName) || python) return AppCategory::developer;
  if (processName == "com.apple.WebKit.WebContent") return AppCategory::browsers;
  if (systemPart) return AppCategory::system;
  if (startsWithAny(path, kDeveloperPrefixes)) return AppCategory::developer;
  if (startsWithAny(path, kSystemPrefixes)) return AppCategory::system;
  return AppCategory::other;
}

}  // namespace pellwin::ProcessCatalog
