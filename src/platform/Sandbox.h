#pragma once

// Whether Velloru runs inside a Flatpak sandbox, where the user's folders are reachable only with the
// "Full Disk Access" style permission (a filesystem override).
bool runningSandboxed();
