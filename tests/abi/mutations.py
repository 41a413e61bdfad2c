"""Changes of the binary contract, each of which the guard must refuse. A row: a name, a file, a pattern, its
replacement. Rows of HEADERS are seen in the headers alone, rows of LIBRARY in a rebuilt library."""
import re

HOST = "VornDALImplIF.h"
PLAYER = "VornEMPAdapterIF.h"
SIDE = "DeviceAbstractionLayer/"


def swap(file, first, second):
    """Swaps two operations that stand one after the other, their comments staying behind."""
    return (f"swap {first} and {second}", file, rf"(virtual [^;]*\b{first}\([^;]*;)(.*?)(virtual [^;]*\b{second}\([^;]*;)", r"\3\2\1")


def insert(file, before):
    return (f"insert before {before}", file, rf"(virtual [^;]*\b{before}\()", r"virtual void inserted() {}\n  \1")


def drop(file, operation):
    return (f"drop {operation}", file, rf"virtual [^;{{}}]*\b{operation}\([^;{{}}]*(;|\{{\}})", "")


def retype(file, operation, old, new):
    return (f"retype {operation}: {old} to {new}", file, rf"(virtual [^;]*\b{operation}\([^;]*?){re.escape(old)}", rf"\g<1>{new}")


def result(file, operation, new):
    return (f"result of {operation} to {new}", file, rf"virtual [\w:<>, ]+( \*?)(\b{operation}\()", rf"virtual {new} \2")


HEADERS = [
    swap(HOST, "alexaStateChanged", "dialogUXStateChanged"),
    swap(HOST, "requestAudioFocus", "releaseAudioFocus"),
    swap(HOST, "startStreamingAudioData", "stopStreamingAudioData"),
    swap(HOST, "getVolume", "getMuteStatus"),
    swap(HOST, "getTimezone", "getDeviceLocale"),
    swap(HOST, "getSystemSetting", "setSystemSetting"),
    swap(HOST, "open", "readKeyValue"),
    swap(HOST, "sendCBLInfo", "alexaAuthStatusChanged"),
    swap(HOST, "sendAppMessage", "setAnimation"),
    swap(HOST, "onChangePlaybackPlay", "onChangePlaybackPause"),
    swap(HOST, "onSetRangeValue", "onAdjustRangeValue"),
    swap(HOST, "onStartRecording", "onStopRecording"),
    swap(HOST, "onSetVolume", "onAdjustVolume"),
    swap(HOST, "clearGUICard", "renderGUICard"),
    swap(PLAYER, "login", "logout"),
    swap(PLAYER, "resume", "pause"),
    swap(PLAYER, "setRepeatAll", "setRepeatNone"),
    swap(SIDE + "DeviceInfo.h", "notifyVolumeChanged", "notifyMuteChanged"),
    swap(SIDE + "AudioIn.h", "notifyAlexaButtonPress", "notifyAlexaButtonReleased"),
    swap(SIDE + "AttachmentReaderContainerInterface.h", "sendData", "notifyEndOfStream"),
    insert(HOST, "alexaStateChanged"),
    insert(HOST, "getEMPAdapter"),
    insert(HOST, "onCommsStateChanged"),
    insert(PLAYER, "login"),
    insert(PLAYER, "getPlaybackState"),
    insert(SIDE + "DeviceInfo.h", "notifySystemSettingChanged"),
    insert(SIDE + "AppMessaging.h", "SendMessageToxApp"),
    insert(SIDE + "OOBE.h", "getAlexaAuthStatus"),
    insert("VornDalMediaPlayerInterfaceImpl.h", "Configure"),
    drop(HOST, "notifyMainAppInitialized"),
    drop(HOST, "getVSKCapabilities"),
    drop(HOST, "onMute"),
    drop(PLAYER, "stop"),
    drop(SIDE + "DeviceInfo.h", "reserved36"),
    drop(SIDE + "GUIOutput.h", "reserved3"),
    drop("VornDalMediaPlayerInterfaceImpl.h", "reserved20"),
    ("drop the second onSetPowerState", HOST, r"virtual [^;]*onSetPowerState\(bool on, std::string target\) = 0;", ""),
    retype(HOST, "changeAlexaLocale", "std::string", "const std::string&"),
    retype(HOST, "onInputChange", "const std::string&", "std::string"),
    retype(HOST, "onSkipChannel", "int", "long"),
    retype(HOST, "onSetRangeValue", "double", "float"),
    retype(HOST, "sendCBLInfo", "std::int64_t&", "std::int32_t&"),
    retype(HOST, "removeKeyValue", "const std::vector<std::string>&", "std::vector<std::string>"),
    retype(PLAYER, "skipForward", "std::chrono::milliseconds", "std::chrono::seconds"),
    retype(SIDE + "AudioIn.h", "sendAudioData", "std::vector<short>&", "std::vector<int>&"),
    result(HOST, "getVolume", "long"),
    result(HOST, "open", "void"),
    result(HOST, "alexaStateChanged", "bool"),
    result(PLAYER, "getPlaybackState", "const char*"),
    ("make an operation const", HOST, r"(getVolume\(\))( = 0)", r"\1 const\2"),
    ("rename an operation", HOST, r"\bgetTimezone\b", "getTimeZone"),
    ("rename a player's operation", PLAYER, r"\bnextTrack\b", "skipTrack"),
    ("make the host's destructor plain", HOST, r"virtual ~VornDALImplIF", "~VornDALImplIF"),
    ("give the app's interface a virtual destructor", SIDE + "AppMessaging.h", r"~AppMessaging\(\)", "virtual ~AppMessaging()"),
    ("give an adapter a virtual operation", "VornStorage.h", r"bool open\(\);", "virtual bool open();"),
    ("give an adapter a field", "VornAudioIn.h", r"(VornDALImplIF& m_host;)", r"\1\n  int m_more = 0;"),
    ("widen the logger's flag", "FileLogger.h", r"const bool m_enabled", "const int m_enabled"),
    ("swap the container's callbacks", "VornAttachmentReaderContainerInterfaceImpl.h",
     r"(std::function<void\(void\*, std::size_t\)> m_onData;)\s*(std::function<void\(\)> m_onEndOfStream;)", r"\2\n  \1"),
    ("put a field before the on-close callback", SIDE + "AttachmentReaderContainerInterface.h", r"(std::function<void\(std::string\)> m_onClose;)", r"int m_before = 0;\n  \1"),
    ("swap the settings' fields", "VornDalMediaPlayerInterfaceImpl.h", r"(bool firstFlag;[^\n]*)\n(\s*std::string name;[^\n]*)", r"\2\n\1"),
    ("widen a flag of the settings", "VornDalMediaPlayerInterfaceImpl.h", r"bool secondFlag;", "int secondFlag;"),
    ("widen the call action", SIDE + "CommsControllerInterface.h", r"std::int32_t \{", "std::int64_t {"),
]

# A row: a name, the class whose source is rebuilt, and the changes of header and source.
LIBRARY = [
    ("rename an adapter's operation", "VornStorage", r"\bclear\(\)(?=;| \{)", "wipe()"),
    ("rename a life operation", "VornLEDController", r"\bShutdown\b", "ShutDown"),
    ("make an adapter's operation const", "VornAudioFocus", r"requestAudioFocus\(\)(?=;| \{)", "requestAudioFocus() const"),
    ("retype an adapter's operation", "VornGUIOutput", r"renderGUICard\(const std::string& card\)", "renderGUICard(std::string card)"),
    ("widen an adapter's argument", "VornDeviceCapabilities", r"onSkipChannel\(int count\)(?=;| \{)", "onSkipChannel(long count)"),
    ("drop an operation", "VornLoggerObserver", r"void (VornLoggerObserver::)?onLogEmitted\([^;{]*(;|\{.*?\n\})", ""),
    ("add an export", "VornAlexaState", r"(std::mutex VornAlexaState::m_mutex;)", r"\1\nVORN_DAL_API int extra() { return 1; }"),
]

# A row: a name and what the linker is told otherwise.
LINK = [
    ("another soname", ["-Wl,-soname,libVornDALImpl.so.1"]),
    ("no soname", ["NO-SONAME"]),
    ("another runtime path", ["-Wl,-rpath,/usr/lib/vorn"]),
    ("lazy binding", ["NO-NOW"]),
    ("an executable stack", ["-Wl,-z,execstack"]),
    ("no read-only relocations", ["NO-RELRO"]),
    ("every symbol exported", ["NO-MAP"]),
    ("another library needed", ["-Wl,--no-as-needed", "-lm"]),
    ("stripped", ["-s"]),
    ("sources sorted", ["SORTED"]),
    ("sources turned round", ["REVERSED"]),
]
