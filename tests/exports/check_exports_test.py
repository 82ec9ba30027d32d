"""The shared library shows its interface and nothing else: not what it is built from, not what it links to."""
import re
import subprocess
import sys

INTERFACE = re.compile(
    r"""^(
      C(Q|Obj|Obj?List|ObArray|String|Runtime|CmdTarget|Document|View|DumpContext|Archive|DBStringHelper)\w*
    | C\w*Exception | CppSQLite3\w* | DBTools(Internal)? | QFCLibraryManager | MutexLocker
    | fn(Check|Snapshot)Library | CreateGalleryDoc | GetGalleryDoc | RegisterGlobalProc | GenerateFolderPath2
    | AfxThrow\w+
    | (CloseHandle|CoCreateGuid|CopyFileA|CreateEventA|CreateMutexA|DeleteFileA|GetAppDataFolder|GetLastError
      |GetTempFileNameA|GetTempPathA|Global(Alloc|Free|Handle|Lock|Size|Unlock)|PathFileExistsA|ReleaseMutex|ResetEvent
      |SetEvent|SetLastError|Sleep|WaitForSingleObject)
    | qfc::\w+
    )\b""",
    re.VERBOSE,
)
# Words in front of a demangled name, and what a compiler puts around it.
PREFIX = re.compile(r"^(non-virtual thunk to |virtual thunk to |vtable for |typeinfo for |typeinfo name for |VTT for )")
# Exported names of ours that stand beside the interface.
QFC = {
    "AllocGlobalBlock", "AllocPlainBlock", "FreeGlobalBlock", "FreePlainBlock", "GuidFromText", "GuidToText",
    "LibraryFindingName", "NativePath", "RuntimeClassRegistration", "SetAnsiCodePage", "SetDataFolder",
    "SetHostFolder", "CurrentDBTools", "IsCurrentDBTools", "SetCurrentDBTools", "ReadDibHeader",
}


def is_interface(name):
    name = PREFIX.sub("", name)
    if name.startswith("qfc::"):
        # Templates of headers that hosts include come along with the classes that use them.
        return re.match(r"qfc::(\w+)", name).group(1) in QFC | {"ChainedList", "PayloadBlock", "OperationQueues",
                                                                "CallbackRegistry", "PointerIterator"}
    return bool(INTERFACE.match(name)) or name.startswith("operator+(") or name in {"_init", "_fini"}


def main(library):
    lines = subprocess.run(["nm", "-DC", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    names = [line.split(maxsplit=2)[2] for line in lines.splitlines() if len(line.split(maxsplit=2)) == 3]
    strangers = sorted({name for name in names if not is_interface(name)})
    for name in strangers:
        print("exported but no part of the interface:", name)
    if "QFCLibraryManager::fnStartService()" not in names:
        print("the interface itself is missing")
        return 1
    return 1 if strangers else 0


sys.exit(main(sys.argv[1]))
