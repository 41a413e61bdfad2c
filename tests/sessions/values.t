Values of every kind, at their ends, and what does not fit.

  $ say() { printf '%s\n' "$@" > lines.scenario; vorn-speaker --state state lines.scenario 2>&1 | sed -n '/Calls that/q; /trace/d; /What the/d; /^ *$/!p'; }
  $ each() { # STATEMENT VALUE...
  >   statement=$1; shift
  >   for value in "$@"; do say 'assistant VornStorage.open' "$statement $value" | grep -v 'open()\|getEMPAdapter'; done
  > }

Whole numbers, numbers, durations, true and false.

  $ each 'firmware VornDeviceInfo.notifyVolumeChanged' 0 -1 007 2147483647 2147483648 -2147483648 -2147483649 +1 1e2 0x10 '"5"' '[5]' '{5=5}' '""' 5%
    up    firmware    VornDeviceInfo              notifyVolumeChanged(0)
    up    firmware    VornDeviceInfo              notifyVolumeChanged(-1)
    up    firmware    VornDeviceInfo              notifyVolumeChanged(7)
    up    firmware    VornDeviceInfo              notifyVolumeChanged(2147483647)
  vorn-speaker: lines.scenario:2:45: expected a whole number, found 2147483648, in VornDeviceInfo.notifyVolumeChanged volume
    up    firmware    VornDeviceInfo              notifyVolumeChanged(-2147483648)
  vorn-speaker: lines.scenario:2:45: expected a whole number, found -2147483649, in VornDeviceInfo.notifyVolumeChanged volume
  vorn-speaker: lines.scenario:2:45: expected a whole number, found +1, in VornDeviceInfo.notifyVolumeChanged volume
  vorn-speaker: lines.scenario:2:45: expected a whole number, found 1e2, in VornDeviceInfo.notifyVolumeChanged volume
  vorn-speaker: lines.scenario:2:45: expected a whole number, found 0x10, in VornDeviceInfo.notifyVolumeChanged volume
  vorn-speaker: lines.scenario:2:45: expected a whole number, found "5", in VornDeviceInfo.notifyVolumeChanged volume
  vorn-speaker: lines.scenario:2:45: expected a whole number, found [5], in VornDeviceInfo.notifyVolumeChanged volume
  vorn-speaker: lines.scenario:2:45: expected a whole number, found {5=5}, in VornDeviceInfo.notifyVolumeChanged volume
  vorn-speaker: lines.scenario:2:45: expected a whole number, found "", in VornDeviceInfo.notifyVolumeChanged volume
  vorn-speaker: lines.scenario:2:45: expected a whole number, found 5%, in VornDeviceInfo.notifyVolumeChanged volume
  $ each 'assistant VornDeviceCapabilities.onSetRangeValue' 0 -0.5 1e3 .5 5. 1e400 1e-400 inf -inf NaN 0x1p3 1,5 '"1"' '[1]'
    down  assistant   VornDeviceCapabilities      onSetRangeValue(0) = true range 0
    down  assistant   VornDeviceCapabilities      onSetRangeValue(-0.5) = false range goes from 0 to 10
    down  assistant   VornDeviceCapabilities      onSetRangeValue(1000) = false range goes from 0 to 10
    down  assistant   VornDeviceCapabilities      onSetRangeValue(0.5) = true range 0.5
    down  assistant   VornDeviceCapabilities      onSetRangeValue(5) = true range 5
  vorn-speaker: lines.scenario:2:50: expected a number, found 1e400, in VornDeviceCapabilities.onSetRangeValue value
  vorn-speaker: lines.scenario:2:50: expected a number, found 1e-400, in VornDeviceCapabilities.onSetRangeValue value
    down  assistant   VornDeviceCapabilities      onSetRangeValue(inf) = false range goes from 0 to 10
    down  assistant   VornDeviceCapabilities      onSetRangeValue(-inf) = false range goes from 0 to 10
    down  assistant   VornDeviceCapabilities      onSetRangeValue(nan) = false range goes from 0 to 10
  vorn-speaker: lines.scenario:2:50: expected a number, found 0x1p3, in VornDeviceCapabilities.onSetRangeValue value
  vorn-speaker: lines.scenario:2:50: expected a number, found 1,5, in VornDeviceCapabilities.onSetRangeValue value
  vorn-speaker: lines.scenario:2:50: expected a number, found "1", in VornDeviceCapabilities.onSetRangeValue value
  vorn-speaker: lines.scenario:2:50: expected a number, found [1], in VornDeviceCapabilities.onSetRangeValue value
  $ each 'assistant VornEMPAdapterControl.skipForward' '0 music' '-5s music' '10ms music' '9223372036854775807 music' '9223372036854775807s music' '9223372036854775s music' '9223372036854776s music' '9223372036854775808 music' 's music' 'ms music' '5 s music' '5S music' '1.5s music' '"5s" music' '[5s] music'
    down  assistant   VornEMPAdapterControl       skipForward(0ms, music) = false
    down  assistant   VornEMPAdapterControl       skipForward(-5000ms, music) = false
    down  assistant   VornEMPAdapterControl       skipForward(10ms, music) = false
    down  assistant   VornEMPAdapterControl       skipForward(9223372036854775807ms, music) = false
  vorn-speaker: lines.scenario:2:45: expected a duration such as 500ms or 2s, found 9223372036854775807s, in VornEMPAdapterControl.skipForward offset playerId
    down  assistant   VornEMPAdapterControl       skipForward(9223372036854775000ms, music) = false
  vorn-speaker: lines.scenario:2:45: expected a duration such as 500ms or 2s, found 9223372036854776s, in VornEMPAdapterControl.skipForward offset playerId
  vorn-speaker: lines.scenario:2:45: expected a duration such as 500ms or 2s, found 9223372036854775808, in VornEMPAdapterControl.skipForward offset playerId
  vorn-speaker: lines.scenario:2:45: expected a duration such as 500ms or 2s, found s, in VornEMPAdapterControl.skipForward offset playerId
  vorn-speaker: lines.scenario:2:45: expected a duration such as 500ms or 2s, found ms, in VornEMPAdapterControl.skipForward offset playerId
  vorn-speaker: lines.scenario:2:49: expected the end of the line after VornEMPAdapterControl.skipForward offset playerId, found music
  vorn-speaker: lines.scenario:2:45: expected a duration such as 500ms or 2s, found 5S, in VornEMPAdapterControl.skipForward offset playerId
  vorn-speaker: lines.scenario:2:45: expected a duration such as 500ms or 2s, found 1.5s, in VornEMPAdapterControl.skipForward offset playerId
  vorn-speaker: lines.scenario:2:45: expected a duration such as 500ms or 2s, found "5s", in VornEMPAdapterControl.skipForward offset playerId
  vorn-speaker: lines.scenario:2:45: expected a duration such as 500ms or 2s, found [5s], in VornEMPAdapterControl.skipForward offset playerId
  $ each 'assistant VornDeviceCapabilities.onMute' true false on off TRUE On 1 0 yes '"true"' '[true]'
    down  assistant   VornDeviceCapabilities      onMute(true) ...
    up    assistant   VornDeviceInfo                notifyMuteChanged(true)
    down  assistant   VornDeviceCapabilities      ... onMute = true muted
    down  assistant   VornDeviceCapabilities      onMute(false) ...
    up    assistant   VornDeviceInfo                notifyMuteChanged(false)
    down  assistant   VornDeviceCapabilities      ... onMute = true unmuted
    down  assistant   VornDeviceCapabilities      onMute(true) ...
    up    assistant   VornDeviceInfo                notifyMuteChanged(true)
    down  assistant   VornDeviceCapabilities      ... onMute = true muted
    down  assistant   VornDeviceCapabilities      onMute(false) ...
    up    assistant   VornDeviceInfo                notifyMuteChanged(false)
    down  assistant   VornDeviceCapabilities      ... onMute = true unmuted
  vorn-speaker: lines.scenario:2:41: expected true or false, found TRUE, in VornDeviceCapabilities.onMute mute
  vorn-speaker: lines.scenario:2:41: expected true or false, found On, in VornDeviceCapabilities.onMute mute
  vorn-speaker: lines.scenario:2:41: expected true or false, found 1, in VornDeviceCapabilities.onMute mute
  vorn-speaker: lines.scenario:2:41: expected true or false, found 0, in VornDeviceCapabilities.onMute mute
  vorn-speaker: lines.scenario:2:41: expected true or false, found yes, in VornDeviceCapabilities.onMute mute
  vorn-speaker: lines.scenario:2:41: expected true or false, found "true", in VornDeviceCapabilities.onMute mute
  vorn-speaker: lines.scenario:2:41: expected true or false, found [true], in VornDeviceCapabilities.onMute mute

Lists, samples and sets.

  $ each 'firmware VornDeviceInfo.notifyLocaleChange' '[]' '[ ]' '[a]' '[a,b]' '[ a , "b, c" ]' '["a]"]' '[a,]' '[,]' '[,a]' '[a b]' '[a' '[a]]' '[a] b' '["a]' '{a=b}' '"[a]"'
    up    firmware    VornDeviceInfo              notifyLocaleChange([])
    up    firmware    VornDeviceInfo              notifyLocaleChange([])
    up    firmware    VornDeviceInfo              notifyLocaleChange([a])
    up    firmware    VornDeviceInfo              notifyLocaleChange([a, b])
    up    firmware    VornDeviceInfo              notifyLocaleChange([a, b, c])
    up    firmware    VornDeviceInfo              notifyLocaleChange([a]])
    up    firmware    VornDeviceInfo              notifyLocaleChange([a])
    up    firmware    VornDeviceInfo              notifyLocaleChange([])
    up    firmware    VornDeviceInfo              notifyLocaleChange([, a])
    up    firmware    VornDeviceInfo              notifyLocaleChange([a b])
  vorn-speaker: lines.scenario:2:44: expected a closing ]
  vorn-speaker: lines.scenario:2:47: expected a blank after the value
  vorn-speaker: lines.scenario:2:48: expected the end of the line after VornDeviceInfo.notifyLocaleChange locale, found b
  vorn-speaker: lines.scenario:2:45: expected a closing "
  vorn-speaker: lines.scenario:2:44: expected a text (in quotes if it begins with a bracket), in VornDeviceInfo.notifyLocaleChange locale
    up    firmware    VornDeviceInfo              notifyLocaleChange([a])
  $ each 'firmware VornAudioIn.sendAudioData' '[]' '[0]' '[32767, -32768]' '[32768]' '[-32769]' '[1.5]' '[a]' '[1, ]' '[""]' '["1"]' '[1 2]' 1 '{1=2}'
    up    firmware    VornAudioIn                 sendAudioData([0 samples])
    up    firmware    VornAudioIn                 sendAudioData([1 samples])
    up    firmware    VornAudioIn                 sendAudioData([2 samples])
  vorn-speaker: lines.scenario:2:36: expected samples such as [0, 120, -120], found [32768], in VornAudioIn.sendAudioData samples
  vorn-speaker: lines.scenario:2:36: expected samples such as [0, 120, -120], found [-32769], in VornAudioIn.sendAudioData samples
  vorn-speaker: lines.scenario:2:36: expected samples such as [0, 120, -120], found [1.5], in VornAudioIn.sendAudioData samples
  vorn-speaker: lines.scenario:2:36: expected samples such as [0, 120, -120], found [a], in VornAudioIn.sendAudioData samples
    up    firmware    VornAudioIn                 sendAudioData([1 samples])
  vorn-speaker: lines.scenario:2:36: expected samples such as [0, 120, -120], found [], in VornAudioIn.sendAudioData samples
    up    firmware    VornAudioIn                 sendAudioData([1 samples])
  vorn-speaker: lines.scenario:2:36: expected samples such as [0, 120, -120], found [1 2], in VornAudioIn.sendAudioData samples
  vorn-speaker: lines.scenario:2:36: expected samples such as [0, 120, -120], found 1, in VornAudioIn.sendAudioData samples
  vorn-speaker: lines.scenario:2:36: expected samples such as [0, 120, -120], found {1=2}, in VornAudioIn.sendAudioData samples
  $ each 'assistant VornStorage.writeKeyValue' '{}' '{ }' '{a=b}' '{a=}' '{=b}' '{=}' '{a = b , c=d}' '{"a=b"="c,d}"}' '{a=b=c}' '{a}' '{a=b,}' '{,}' '{a=b c=d}' '{a=b, a=c}' '{"a"=b, a=c}' '{a=b' '[a=b]' 'a=b' '"{a=b}"'
    down  assistant   VornStorage                 writeKeyValue({}) = true
    down  assistant   VornStorage                 writeKeyValue({}) = true
    down  assistant   VornStorage                 writeKeyValue({a=b}) = true
    down  assistant   VornStorage                 writeKeyValue({a=}) = true
    down  assistant   VornStorage                 writeKeyValue({=b}) = true
    down  assistant   VornStorage                 writeKeyValue({=}) = true
    down  assistant   VornStorage                 writeKeyValue({a=b, c=d}) = true
    down  assistant   VornStorage                 writeKeyValue({a=b=c,d}}) = true
    down  assistant   VornStorage                 writeKeyValue({a=b=c}) = true
  vorn-speaker: lines.scenario:2:39: expected = between a key and its value
    down  assistant   VornStorage                 writeKeyValue({a=b}) = true
  vorn-speaker: lines.scenario:2:38: expected = between a key and its value
    down  assistant   VornStorage                 writeKeyValue({a=b c=d}) = true
  vorn-speaker: lines.scenario:2:37: expected every key once
  vorn-speaker: lines.scenario:2:37: expected every key once
  vorn-speaker: lines.scenario:2:37: expected a closing }
  vorn-speaker: lines.scenario:2:37: expected a set such as {alarm=07:00, city=Oslo}, found [a=b], in VornStorage.writeKeyValue entries
  vorn-speaker: lines.scenario:2:37: expected a set such as {alarm=07:00, city=Oslo}, found a=b, in VornStorage.writeKeyValue entries
  vorn-speaker: lines.scenario:2:37: expected a set such as {alarm=07:00, city=Oslo}, found "{a=b}", in VornStorage.writeKeyValue entries

Texts.

  $ each 'assistant VornDeviceInfo.getConfigData' a '"a b"' '""' '"\n\t\"\\\x41"' '"\x4"' '"\q"' '"a' 'a"' '"a"b' '[a]' '{a=b}' '"[a]"' a,b a=b '#a' '"#a"' ä "'a b'" '$a' '"\xff"'
    down  assistant   VornDeviceInfo              getConfigData(a)
    down  assistant   VornDeviceInfo              getConfigData(a b)
    down  assistant   VornDeviceInfo              getConfigData()
    down  assistant   VornDeviceInfo              getConfigData(\n\x09"\A)
  vorn-speaker: lines.scenario:2:41: expected one of the escapes \n \t \" \\ \x41
  vorn-speaker: lines.scenario:2:41: expected one of the escapes \n \t \" \\ \x41
  vorn-speaker: lines.scenario:2:40: expected a closing "
    down  assistant   VornDeviceInfo              getConfigData(a")
  vorn-speaker: lines.scenario:2:43: expected a blank after the value
  vorn-speaker: lines.scenario:2:40: expected a text (in quotes if it begins with a bracket), in VornDeviceInfo.getConfigData key
  vorn-speaker: lines.scenario:2:40: expected a text (in quotes if it begins with a bracket), in VornDeviceInfo.getConfigData key
    down  assistant   VornDeviceInfo              getConfigData([a])
    down  assistant   VornDeviceInfo              getConfigData(a,b)
    down  assistant   VornDeviceInfo              getConfigData(a=b)
  vorn-speaker: lines.scenario:2:42: expected key, a text, in VornDeviceInfo.getConfigData key
    down  assistant   VornDeviceInfo              getConfigData(#a)
    down  assistant   VornDeviceInfo              getConfigData(\xc3\xa4) (esc)
  vorn-speaker: lines.scenario:2:43: expected the end of the line after VornDeviceInfo.getConfigData key, found b'
    down  assistant   VornDeviceInfo              getConfigData($a)
    down  assistant   VornDeviceInfo              getConfigData(\xff)

Comments and blanks.

  $ say '' '   ' '# all' '  # indented' 'assistant VornDeviceInfo.getVolume # behind' '	assistant	VornDeviceInfo.getVolume	'
    down  assistant   VornDeviceInfo              getVolume() = 30
    down  assistant   VornDeviceInfo              getVolume() = 30
  $ say 'assistant VornDeviceInfo.getVolume#close' 'assistant# VornDeviceInfo.getVolume' '"assistant" VornDeviceInfo.getVolume' 'assistant "VornDeviceInfo.getVolume"' 'assistant [VornDeviceInfo.getVolume]' 'Assistant VornDeviceInfo.getVolume'
  vorn-speaker: lines.scenario:1:11: expected an operation of the assistant, found VornDeviceInfo.getVolume#close; did you mean VornDeviceInfo.getVolume?
  lines.scenario:2:1: expected one of assistant, firmware, together, expect, remove, create, answer, delay, fail, restore, wait, section, found assistant#; did you mean assistant?
  lines.scenario:3:1: expected one of assistant, firmware, together, expect, remove, create, answer, delay, fail, restore, wait, section, found "assistant"; did you mean assistant?
  lines.scenario:5:11: expected an operation of the assistant, found [VornDeviceInfo.getVolume]; did you mean VornDeviceInfo.getVolume?
  lines.scenario:6:1: expected one of assistant, firmware, together, expect, remove, create, answer, delay, fail, restore, wait, section, found Assistant; did you mean assistant?
