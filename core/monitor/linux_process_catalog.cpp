// The Linux rows of the process catalog. Sentences are the product's own voice: what the part
// of the system does, and when it is busy.
#include <array>

#include "core/monitor/process_catalog_rows.h"

namespace pellwin::ProcessCatalog {
namespace {

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
    // The kernel's own threads.
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

    // Display and desktop.
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

    // Search indexers.
    {"localsearch-3", Match::exact, kFileIndexer},
    {"tracker-miner-fs-3", Match::exact, kFileIndexer},
    {"localsearch-extractor-3", Match::exact, kContentIndexer},
    {"tracker-extract-3", Match::exact, kContentIndexer},
    {"baloo_file", Match::exact, kKdeIndexer},
    {"baloo_file_extractor", Match::exact, kKdeIndexer},

    // Software and firmware updates.
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

    // Sound, Bluetooth and networking.
    {"pipewire", Match::exact, kPipeWire},
    {"pipewire-pulse", Match::exact, kPipeWire},
    {"wireplumber",
     Match::exact,
     {"Audio session manager", "Decides which speakers, microphones and cameras apps use."}},
    {"pulseaudio", Match::exact, {"Audio server", "Plays and records sound for every app."}},
    {"bluetoothd", Match::exact, kBluetooth},
    {"obexd", Match::exact, kBluetooth},
    {"NetworkManager", Match::exact, kNetworking},
    {"wpa_supplicant", Match::exact, kNetworking},
    {"iwd", Match::exact, kNetworking},
    {"ModemManager", Match::exact, kNetworking},
    {"systemd-resolved", Match::exact, kNameLookup},
    {"avahi-daemon", Match::exact, kNameLookup},

    // The service manager, logs and crash reports.
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

    // Container daemons.
    {"dockerd", Match::exact, kContainers},
    {"containerd", Match::exact, kContainers},
    {"containerd-shim", Match::prefix, kContainers},
    {"podman", Match::exact, kContainers},
    {"conmon", Match::exact, kContainers},

    // Desktop services.
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

}  // namespace

std::span<const Row> linuxRows() { return kRows; }

KnownProcess linuxKernel() { return kKernel; }

}  // namespace pellwin::ProcessCatalog
