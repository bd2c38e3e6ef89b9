// The folder catalog's rows that are live on Linux: its own folders first, then those that
// every system keeps in the same place. Sentences are the product's own voice: what the folder
// is for, and whether removing it costs anything.
#include <array>

#include "core/space/folder_catalog_rows.h"

namespace pellwin::FolderCatalog {
namespace {

using enum StorageCategory;

constexpr auto kRows = std::to_array<FolderEntry>({
    // The XDG base folders and what lives in them.
    row(".config", appData, "Settings that your apps keep. Deleting things here resets an app"),
    row(".local", appData, "Data, state and programs that apps keep just for you"),
    row(".local/share", appData,
        "Data that apps keep for you, such as mail, games and downloads. Deleting things here "
        "can break an app"),
    row(".local/state", appData, "History and state that apps keep between runs"),
    row(".local/bin", other, "Programs installed just for you"),
    row(".cache", other, "Temporary files that apps and tools rebuild when they need them",
        kCleanable),
    row(".local/share/Trash", other, "Files you moved to the Trash. Emptying it frees the space",
        kCleanable),
    row(".local/share/Tovrin", appData, "Tovrin's own history. Clear it from Settings"),
    row(".local/share/keyrings", appData, "Your saved passwords and keys. Never remove these"),
    row(".gnupg", other, "Your keys for signing and encrypting. Never remove these"),
    // The user folders that the desktop makes beside Documents, Music and the others below.
    row("Videos", yourFiles, "Videos you saved or recorded"),
    row("Templates", yourFiles, "Files your desktop offers as starting points for new documents"),
    // Sandboxed apps.
    row(".var/app", appData,
        "Data for apps installed with Flatpak, one folder each. Deleting one resets that app"),
    row(".local/share/flatpak", appData, "Apps and runtimes installed with Flatpak just for you"),
    row("snap", appData, "Data for apps installed as snaps, one folder each"),
    // Browsers, mail and editors.
    row(".mozilla", appData, "Firefox's profiles: bookmarks, history, passwords and extensions"),
    row(".config/mozilla", appData,
        "Firefox's profiles: bookmarks, history, passwords and extensions"),
    row(".thunderbird", appData, "Thunderbird's mail, accounts and settings"),
    row(".config/google-chrome", appData,
        "Chrome's bookmarks, history, extensions and saved sites"),
    row(".config/chromium", appData, "Chromium's bookmarks, history, extensions and saved sites"),
    row(".config/BraveSoftware", appData, "Brave's bookmarks, history, extensions and saved sites"),
    row(".config/microsoft-edge", appData, "Edge's bookmarks, history, extensions and saved sites"),
    row(".config/vivaldi", appData, "Vivaldi's bookmarks, history, extensions and saved sites"),
    row(".config/Slack", appData, "Slack's downloaded files and settings"),
    row(".config/Code", developer, "Visual Studio Code's settings and workspace state"),
    row(".config/VSCodium", developer, "VSCodium's settings and workspace state"),
    row(".vscode", developer, "Visual Studio Code's extensions"),
    row(".config/JetBrains", developer, "Settings of JetBrains IDEs such as IntelliJ IDEA"),
    row(".local/share/JetBrains", developer, "JetBrains IDEs and their plugins"),
    // Developer tools' downloads where Linux keeps them.
    row(".npm", developer, "npm's cache, logs and the packages npx fetched. npm fills it again",
        kCleanable),
    row(".m2", developer, "Maven's settings and downloaded libraries"),
    row(".m2/repository", developer,
        "Libraries Maven downloaded before. Maven downloads them again when needed", kCleanable),
    row(".cache/pip", developer, "Python packages pip downloaded before", kCleanable),
    row(".cache/yarn", developer, "Packages Yarn downloaded before", kCleanable),
    row(".cache/go-build", developer, "Compiled pieces Go reuses between builds", kCleanable),
    row(".cache/Homebrew", developer, "Downloads Homebrew kept from past installs", kCleanable),
    row(".local/share/pnpm/store", developer, "Packages pnpm shares between projects", kCleanable),
    // Logs that editors and desktop sessions leave in home; quick clean takes the old ones.
    row(".config/Code/logs", developer, "Logs Visual Studio Code wrote, one folder per session",
        kCleanable),
    row(".local/share/xorg", other, "Logs the X server wrote for your desktop sessions",
        kCleanable),
    row(".local/share/sddm", other, "Logs of your desktop sessions, written by the login screen",
        kCleanable),
    row(".xsession-errors.old", other,
        "Messages programs wrote during your previous desktop session", kCleanable),
    row(".local/share/containers", developer, "Podman's images and containers"),
    // The system outside home.
    row("/usr", system, "Programs and files that the system's packages install"),
    row("/var", system, "Data the system changes as it runs: logs, caches and databases"),
    row("/var/log", system, "Logs that the system and its services write"),
    row("/var/cache", system, "Downloads and caches of the system's package manager and services"),
    row("/var/lib/flatpak", system, "Apps and runtimes installed with Flatpak for everyone"),
    row("/var/lib/docker", system,
        "Docker's images, containers and volumes. Clear them with docker system prune"),
    row("/var/lib/snapd", system,
        "Apps installed as snaps, with older versions kept for going back"),
    row("/boot", system, "The kernels and files the computer starts from"),
    row("/snap", system, "Apps installed as snaps, each version in its own folder"),
    row("/tmp", system, "Temporary files that programs make while they run"),
    row("/swapfile", system, "Memory Linux moved to disk"),

    // Folders that tools keep in home on every system. npm's content-addressed download cache
    // is the same everywhere; the rest of ~/.npm (logs, npx installs) has its own row.
    row(".npm/_cacache", developer, "npm's download cache", kCleanable),
    row(".cargo", developer, "Rust packages and tools"),
    row(".cargo/registry/cache", developer, "Rust packages Cargo downloaded before", kCleanable),
    // Not cleanable as a whole: gradle.properties beside the caches often holds credentials.
    row(".gradle", developer, "Gradle's downloads and build caches"),
    row(".gradle/caches", developer, "Libraries Gradle downloaded before", kCleanable),
    row(".cache/huggingface", developer,
        "AI models downloaded from Hugging Face. They download again when needed", kCleanable),
    // Ollama keeps its signing key beside the models, so the folder is never cleanable.
    row(".ollama", developer, "AI models downloaded by Ollama"),
    row(".ollama/models", developer,
        "AI models downloaded by Ollama. ollama rm removes one you don't use, and ollama pull "
        "gets it back"),
    row(".lmstudio", developer, "LM Studio's models, chats and settings"),
    row(".cache/lm-studio", developer,
        "AI models downloaded by LM Studio. Delete them in LM Studio, and download them again "
        "there"),
    // config.json here holds registry credentials; images live elsewhere.
    row(".docker", developer, "Docker's settings and command line data"),
    row(".rustup", developer, "Rust toolchains"),
    row(".nvm", developer, "Node versions managed by nvm"),
    row(".pyenv", developer, "Python versions managed by pyenv"),
    row(".ssh", other, "Your keys for signing in to servers. Never remove these"),
    // The user folders.
    row("Documents", yourFiles, "Documents you saved"),
    row("Desktop", yourFiles, "Files on your desktop"),
    row("Downloads", yourFiles, "Files you downloaded"),
    row("Music", yourFiles, "Music and audio projects"),
    row("Pictures", yourFiles, "Photos and images"),
    row("Public", yourFiles, "Files you share with other users of this Mac"),
    row("Applications", other, "Apps installed just for you"),
    // Project folders, found at any depth inside home.
    row("node_modules", developer,
        "Packages a JavaScript project downloaded. npm or pnpm installs them again", kCleanable,
        kAnywhere),
    row(".venv", developer,
        "A Python project's environment. Installing the project's packages makes it again",
        kCleanable, kAnywhere),
    // The one build-output name that is never anything else: Python writes compiled files
    // there and rewrites them whenever they are missing. Names such as build, dist or target
    // are too common to be trusted without knowing the project (the advisor does that).
    row("__pycache__", developer, "Compiled Python files, made again the next time the code runs",
        kCleanable, kAnywhere),
    row(".next", developer, "Files Next.js builds, made again on the next build", kCleanable,
        kAnywhere),
    row(".build", developer, "Files Swift builds, made again on the next build", kCleanable,
        kAnywhere),
    row(".git", developer, "A project's change history", false, kAnywhere),
    // Shared folders outside home.
    row("/usr/local", system, "Tools that macOS and developer tools install"),
    row("/opt", system, "Software installed by tools like Homebrew"),
});

}  // namespace

std::span<const FolderEntry> linuxRows() { return kRows; }

}  // namespace pellwin::FolderCatalog
