// The macOS rows of the process catalog: kept so that a machine reading from that system
// judges the same; not live on Linux. Sentences are the product's own voice.
#include <array>

#include "core/monitor/process_catalog_rows.h"

namespace pellwin::ProcessCatalog {
namespace {

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
});

}  // namespace

std::span<const Row> macosRows() { return kRows; }

}  // namespace pellwin::ProcessCatalog
