A recording made by hand: what can stand in one, in both versions.

  $ call() { # NUMBER TIME DURATION THREAD NUMBER_OF_THREAD DIRECTION ADAPTER OPERATION INTERFACE SLOT INSIDE ARGUMENTS RESULT WRITTEN EXCEPTION WAITED HOST REACHED
  >   printf '{"call":%s,"time":%s,"duration":%s,"thread":"%s","threadNumber":%s,"direction":"%s","adapter":"%s","operation":"%s","interface":"%s","slot":%s,"inside":%s,"arguments":%s,"result":"%s","written":%s,"exception":%s,"waited":%s,"host":%s,"reached":%s}\n' "$@"
  > }
  $ {
  >   echo '{"recording":"vorn-speaker","version":2,"started":"2026-01-02T03:04:05.000006Z","writer":"hand"}'
  >   call 1 10 7 assistant 1 down VornDeviceInfo getVolume VornDALImplIF 13 0 '[]' 30 '[]' null 2 4 true
  >   call 2 20 1500 assistant 1 down VornDeviceCapabilities onSetVolume VornDALImplIF 61 0 '["40"]' 'true volume 40' '[]' null 0 1400 true
  >   call 3 30 900 assistant 1 up VornDeviceInfo notifyVolumeChanged DeviceInfo 41 1 '["40"]' '' '[]' null 0 800 true
  >   call 4 1000 2000000 client 2 down VornDeviceInfo getSystemSetting VornDALImplIF 22 0 '["channel","\"\""]' true '["value=7"]' null 12 3 true
  >   call 5 1100 60 client 2 down VornEMPAdapterControl pause VornEMPAdapterIF 12 0 '["music"]' '' '[]' '"no disk; \"x\""' null null null
  >   call 6 2000 3 firmware 3 up VornDeviceInfo notifyMuteChanged DeviceInfo 42 0 '["true"]' '' '[]' null 0 null false
  >   call 7 2100 3 microphone 4 up VornAudioIn sendAudioData AudioIn 11 0 '["[1, -2]"]' '' '[]' null 0 2 true
  >   call 8 2200 3 microphone 4 up VornAudioIn sendAudioData AudioIn 11 0 '["[3, -32768]"]' '' '[]' null 0 2 true
  >   echo '{"sound":"microphone","time":2500,"blocks":2,"samples":4,"peak":32768,"level":16384,"gap":97}'
  >   echo '{"note":"paused","time":2600}'
  >   echo '{"leftOut":3,"time":2700}'
  >   echo '{"open":{"call":9,"time":3000,"thread":"assistant","threadNumber":1,"direction":"down","adapter":"VornGUIOutput","operation":"renderGUICard","interface":"VornDALImplIF","slot":30,"inside":0,"arguments":["\"a card\""]}}'
  >   echo '{"call":10,"time":30'
  > } > full
  $ vorn-speaker report full
  full:14: left out, the line is cut
  full: calls that could not be kept when they came: 3
  full:13: the call 9 had not returned: VornGUIOutput.renderGUICard
  assistant          firmware
      |----------------->|  VornDeviceInfo.getVolume = 30
      |----------------->|  VornDeviceCapabilities.onSetVolume 40 = true volume 40
      |<-----------------|    VornDeviceInfo.notifyVolumeChanged 40
      |----------------->|  VornDeviceInfo.getSystemSetting channel "" = true value=7
      |----------------->|  VornEMPAdapterControl.pause music = threw no disk; "x"
      |<-----------------|  VornDeviceInfo.notifyMuteChanged true  (reached nobody)
      |<-----------------|  VornAudioIn.sendAudioData [1, -2]
  
  Microseconds                                                                   calls   least  median    90 %    99 %    most
  down  VornDeviceCapabilities.onSetVolume                                           1    1500    1500    1500    1500    1500
  down  VornDeviceInfo.getSystemSetting                                              1 2000000 2000000 2000000 2000000 2000000
  down  VornDeviceInfo.getVolume                                                     1       7       7       7       7       7
  down  VornEMPAdapterControl.pause                                                  1      60      60      60      60      60
  up    VornAudioIn.sendAudioData                                                    2       3       3       3       3       3
  up    VornDeviceInfo.notifyMuteChanged                                             1       3       3       3       3       3
  up    VornDeviceInfo.notifyVolumeChanged                                           1     900     900     900     900     900
  
  Microseconds on the other side                                                 calls   least  median    90 %    99 %    most
  down  VornDeviceCapabilities.onSetVolume                                           1    1400    1400    1400    1400    1400
  down  VornDeviceInfo.getSystemSetting                                              1       3       3       3       3       3
  down  VornDeviceInfo.getVolume                                                     1       4       4       4       4       4
  up    VornAudioIn.sendAudioData                                                    2       2       2       2       2       2
  up    VornDeviceInfo.notifyVolumeChanged                                           1     800     800     800     800     800
  
  Microseconds of waiting for the adapter's lock                                 calls   least  median    90 %    99 %    most
  down  VornDeviceCapabilities.onSetVolume                                           1       0       0       0       0       0
  down  VornDeviceInfo.getSystemSetting                                              1      12      12      12      12      12
  down  VornDeviceInfo.getVolume                                                     1       2       2       2       2       2
  up    VornAudioIn.sendAudioData                                                    2       0       0       0       0       0
  up    VornDeviceInfo.notifyMuteChanged                                             1       0       0       0       0       0
  up    VornDeviceInfo.notifyVolumeChanged                                           1       0       0       0       0       0
  
  Calls during which another thread called                                       calls at once
  down  VornDeviceCapabilities.onSetVolume                                           1       2
  down  VornDeviceInfo.getSystemSetting                                              1       2
  down  VornEMPAdapterControl.pause                                                  1       2
  up    VornAudioIn.sendAudioData                                                    2       2
  up    VornDeviceInfo.notifyMuteChanged                                             1       2
  
  Sound, a line a second                                                        blocks samples    peak   level     gap
  microphone                                                                         2       4   32768   16384      97
  
  After 2600 microseconds: paused
  $ vorn-speaker report --calls 2-3 full | head -n 5
  full:14: left out, the line is cut
  full: calls that could not be kept when they came: 3
  assistant          firmware
      |----------------->|  VornDeviceCapabilities.onSetVolume 40 = true volume 40
      |<-----------------|    VornDeviceInfo.notifyVolumeChanged 40
  $ vorn-speaker report --calls 9- --adapter VornDeviceInfo full | tail -n 3
  microphone                                                                         2       4   32768   16384      97
  
  After 2600 microseconds: paused
  $ vorn-speaker report --adapter VornDeviceInf full
  vorn-speaker: expected an adapter, found VornDeviceInf; did you mean VornDeviceInfo?
  Run with --help for more information.
  [2]
  $ vorn-speaker report --calls 3-2 full
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found 3-2
  Run with --help for more information.
  [2]
  $ vorn-speaker export --format csv full
  vorn-speaker: full:14: left out, the line is cut
  call,time,duration,thread,threadNumber,direction,adapter,operation,interface,slot,inside,arguments,result,written,exception,waited,host,reached\r (esc)
  1,10,7,assistant,1,down,VornDeviceInfo,getVolume,VornDALImplIF,13,0,[],30,[],,2,4,true\r (esc)
  2,20,1500,assistant,1,down,VornDeviceCapabilities,onSetVolume,VornDALImplIF,61,0,"[""40""]",true volume 40,[],,0,1400,true\r (esc)
  3,30,900,assistant,1,up,VornDeviceInfo,notifyVolumeChanged,DeviceInfo,41,1,"[""40""]",,[],,0,800,true\r (esc)
  4,1000,2000000,client,2,down,VornDeviceInfo,getSystemSetting,VornDALImplIF,22,0,"[""channel"",""\\""\\""""]",true,"[""value=7""]",,12,3,true\r (esc)
  5,1100,60,client,2,down,VornEMPAdapterControl,pause,VornEMPAdapterIF,12,0,"[""music""]",,[],"no disk; ""x""",,,\r (esc)
  6,2000,3,firmware,3,up,VornDeviceInfo,notifyMuteChanged,DeviceInfo,42,0,"[""true""]",,[],,0,,false\r (esc)
  7,2100,3,microphone,4,up,VornAudioIn,sendAudioData,AudioIn,11,0,"[""[1, -2]""]",,[],,0,2,true\r (esc)
  8,2200,3,microphone,4,up,VornAudioIn,sendAudioData,AudioIn,11,0,"[""[3, -32768]""]",,[],,0,2,true\r (esc)
  9,3000,,assistant,,down,VornGUIOutput,renderGUICard,VornDALImplIF,30,0,"[""\\""a card\\""""]",,,,,,\r (esc)
  $ vorn-speaker export --format mermaid full
  vorn-speaker: full:14: left out, the line is cut
  %% Made by vorn-speaker
  sequenceDiagram
    participant t1 as thread assistant
    participant t2 as thread client
    participant t3 as thread firmware
    participant t4 as thread microphone
    participant assistantSide as assistant side
    participant host as host
    t1->>host: VornDeviceInfo.getVolume
    host-->>t1: 30
    t1->>host: VornDeviceCapabilities.onSetVolume 40
    host->>assistantSide: VornDeviceInfo.notifyVolumeChanged 40
    t2->>host: VornDeviceInfo.getSystemSetting channel #34;#34;
    host-->>t2: true value=7
    t2->>host: VornEMPAdapterControl.pause music
    host--xt2: threw no disk#59; #34;x#34;
    host-->>t1: true volume 40
    t3->>assistantSide: VornDeviceInfo.notifyMuteChanged true
    t4->>assistantSide: VornAudioIn.sendAudioData [2 samples] and 1 more
    t1->>host: VornGUIOutput.renderGUICard #34;a card#34;
    note right of host: had not returned
    note over t1: paused
    note over t1: calls that could not be kept#58; 3
  $ vorn-speaker export --format trace-event full
  vorn-speaker: full:14: left out, the line is cut
  {"otherData":{"exporter":"vorn-speaker","program":"","started":"2026-01-02T03:04:05.000006Z","writer":"hand"},"displayTimeUnit":"ms","traceEvents":[
  {"ph":"M","name":"process_name","cat":"__metadata","pid":1,"tid":0,"ts":0,"args":{"name":"vorn-speaker"}},
  {"ph":"M","name":"thread_name","cat":"__metadata","pid":1,"tid":1,"ts":0,"args":{"name":"assistant"}},
  {"ph":"M","name":"thread_name","cat":"__metadata","pid":1,"tid":2,"ts":0,"args":{"name":"client"}},
  {"ph":"M","name":"thread_name","cat":"__metadata","pid":1,"tid":3,"ts":0,"args":{"name":"firmware"}},
  {"ph":"M","name":"thread_name","cat":"__metadata","pid":1,"tid":4,"ts":0,"args":{"name":"microphone"}},
  {"ph":"X","name":"VornDeviceInfo.getVolume","cat":"down","pid":1,"tid":1,"ts":10,"dur":7,"args":{"call":1,"arguments":[],"result":"30","waited":2,"host":4,"reached":true}},
  {"ph":"X","name":"waits for the lock","cat":"lock","pid":1,"tid":1,"ts":10,"dur":2,"args":{}},
  {"ph":"X","name":"VornDeviceCapabilities.onSetVolume","cat":"down","pid":1,"tid":1,"ts":20,"dur":1500,"args":{"call":2,"arguments":["40"],"result":"true volume 40","waited":0,"host":1400,"reached":true}},
  {"ph":"X","name":"VornDeviceInfo.notifyVolumeChanged","cat":"up","pid":1,"tid":1,"ts":30,"dur":900,"args":{"call":3,"arguments":["40"],"waited":0,"host":800,"reached":true}},
  {"ph":"X","name":"VornDeviceInfo.getSystemSetting","cat":"down","pid":1,"tid":2,"ts":1000,"dur":2000000,"args":{"call":4,"arguments":["channel","\"\""],"result":"true","written":["value=7"],"waited":12,"host":3,"reached":true}},
  {"ph":"X","name":"waits for the lock","cat":"lock","pid":1,"tid":2,"ts":1000,"dur":12,"args":{}},
  {"ph":"X","name":"VornEMPAdapterControl.pause","cat":"down","pid":1,"tid":2,"ts":1100,"dur":60,"args":{"call":5,"arguments":["music"],"exception":"no disk; \"x\""}},
  {"ph":"X","name":"VornDeviceInfo.notifyMuteChanged","cat":"up","pid":1,"tid":3,"ts":2000,"dur":3,"args":{"call":6,"arguments":["true"],"waited":0,"reached":false}},
  {"ph":"X","name":"VornAudioIn.sendAudioData","cat":"up","pid":1,"tid":4,"ts":2100,"dur":3,"args":{"call":7,"arguments":["[2 samples]"],"waited":0,"host":2,"reached":true}},
  {"ph":"C","name":"sound microphone","cat":"sound","pid":1,"tid":4,"ts":2100,"args":{"peak":2,"level":1}},
  {"ph":"X","name":"VornAudioIn.sendAudioData","cat":"up","pid":1,"tid":4,"ts":2200,"dur":3,"args":{"call":8,"arguments":["[2 samples]"],"waited":0,"host":2,"reached":true}},
  {"ph":"C","name":"sound microphone","cat":"sound","pid":1,"tid":4,"ts":2200,"args":{"peak":32768,"level":23170}},
  {"ph":"B","name":"VornGUIOutput.renderGUICard","cat":"down","pid":1,"tid":1,"ts":3000,"args":{"call":9,"arguments":["\"a card\""]}},
  {"ph":"C","name":"sound microphone","cat":"sound","pid":1,"tid":0,"ts":2500,"args":{"peak":32768,"level":16384}},
  {"ph":"i","name":"calls that could not be kept: 3","cat":"note","pid":1,"tid":0,"ts":2700,"s":"g","args":{}},
  {"ph":"i","name":"paused","cat":"note","pid":1,"tid":0,"ts":2600,"s":"g","args":{}}
  ]}
  $ vorn-speaker export --format yaml full
  vorn-speaker: --format: expected trace-event, mermaid or csv, found yaml
  Run with --help for more information.
  [2]
  $ vorn-speaker export --format csv --calls 2- --adapter VornDeviceInfo --output table full && cut -d, -f1,2,8 table
  vorn-speaker: full:14: left out, the line is cut
  call,time,operation
  3,30,notifyVolumeChanged
  4,1000,getSystemSetting
  6,2000,notifyMuteChanged
  $ vorn-speaker export --format csv --output full full
  vorn-speaker: full: is the recording, and the export would replace it; name another file
  [2]
How two differ.

  $ sed -e '3s/"result":"[^"]*"/"result":"false"/' -e '4d' -e '5s/channel/input/' full > other
  $ vorn-speaker report full other
  full:14: left out, the line is cut
  full: calls that could not be kept when they came: 3
  full:13: the call 9 had not returned: VornGUIOutput.renderGUICard
  other:13: left out, the line is cut
  other: calls that could not be kept when they came: 3
  other:12: the call 9 had not returned: VornGUIOutput.renderGUICard
  full: call 2, and other: call 2, are answered differently:
    called  VornDeviceCapabilities.onSetVolume 40
    first   true volume 40
    second  false
  full:4: only here, call 3, thread assistant: VornDeviceInfo.notifyVolumeChanged 40 = no result
  full:5: only here, call 4, thread client: VornDeviceInfo.getSystemSetting channel "" = true value=7
  other:4: only here, call 4, thread client: VornDeviceInfo.getSystemSetting input "" = true value=7
  
  Microseconds, first and second                                                         calls          median            99 %
  down  VornDeviceCapabilities.onSetVolume                                           1       1    1500    1500    1500    1500
  down  VornDeviceInfo.getSystemSetting                                              1       1 2000000 2000000 2000000 2000000
  down  VornDeviceInfo.getVolume                                                     1       1       7       7       7       7
  down  VornEMPAdapterControl.pause                                                  1       1      60      60      60      60
  up    VornDeviceInfo.notifyVolumeChanged                                           1       0     900       -     900       -
  
  2 calls are the same, 4 differ.
  [1]
  $ vorn-speaker report full full | tail -n 1
  5 calls are the same, 0 differ.
Answers of the simulated speaker that differ from those of the recording.

  $ vorn-speaker --state state replay full
  full:14: left out, the line is cut
  full: calls that could not be kept when they came: 3
  full:13: the call 9 had not returned: VornGUIOutput.renderGUICard
  full:5: Call 4 is answered differently:
    before    VornDeviceInfo.getVolume = 30
    before    VornDeviceCapabilities.onSetVolume 40 = true volume 40
    called    VornDeviceInfo.getSystemSetting channel ""
    recorded  true value=7
    now       true value=1
  [1]
  $ vorn-speaker --state state --keep-going replay full | tail -n 1
  4 calls, 2 answered differently.
  $ vorn-speaker --state state replay --calls 1 full | tail -n 1
  1 call, all answered as recorded.
  $ vorn-speaker --state state replay --calls 50 full 2>&1 | tail -n 1
  vorn-speaker: full: expected calls of the assistant client, found none to play
Files that are no recordings.

  $ echo '{"recording":"vorn-speaker","version":3}' > newer
  $ echo 'calls' > words
  $ : > empty
  $ for file in newer words empty none .; do vorn-speaker report $file; vorn-speaker --state state replay $file; done
  vorn-speaker: newer:1: expected a recording of version 1 to 2
  vorn-speaker: newer:1: expected a recording of version 1 to 2
  vorn-speaker: words:1: expected a recording of version 1 to 2
  vorn-speaker: words:1: expected a recording of version 1 to 2
  vorn-speaker: empty: expected a recording, found an empty file
  vorn-speaker: empty: expected a recording, found an empty file
  vorn-speaker: none: cannot be read: No such file or directory
  vorn-speaker: none: cannot be read: No such file or directory
  vorn-speaker: .: cannot be read: Is a directory
  vorn-speaker: .: cannot be read: Is a directory
  [2]
  $ sed -e '2s/"slot":13/"slot":-1/' -e '3s/"direction":"down"/"direction":"sideways"/' -e '4s/"arguments":\["40"\]/"arguments":["a b"]/' full > faulty
  $ vorn-speaker report faulty
  vorn-speaker: faulty:2: expected a line of a recording; the field slot: expected a whole number from 0 to 1000, found -1
  [2]
A recording of version 1.

  $ {
  >   echo '{"recording":"vorn-speaker","version":1}'
  >   echo '{"call":1,"time":10,"duration":7,"thread":"assistant","direction":"down","adapter":"VornDeviceInfo","operation":"getVolume","interface":"VornDALImplIF","slot":13,"inside":0,"arguments":[],"result":"30","written":[],"exception":null}'
  > } > old
  $ vorn-speaker report old
  assistant          firmware
      |----------------->|  VornDeviceInfo.getVolume = 30
  
  Microseconds                                                                   calls   least  median    90 %    99 %    most
  down  VornDeviceInfo.getVolume                                                     1       7       7       7       7       7
  $ vorn-speaker --state state replay old
  1 call, all answered as recorded.
What record writes, without its times.

  $ cat > short.scenario <<'END'
  > assistant VornDeviceInfo.getVolume
  > assistant VornDeviceCapabilities.onSetVolume 40
  > assistant VornEMPAdapterControl.login hidden ada true 1s music
  > fail VornDeviceInfo.getTimezone "no clock"
  > assistant VornDeviceInfo.getTimezone
  > remove adapters
  > assistant VornDeviceInfo.getVolume
  > END
  $ vorn-speaker --state state --scenario short.scenario record made | head -n 9
    down  assistant   VornDeviceInfo              getVolume() = 30
    down  assistant   VornDeviceCapabilities      onSetVolume(40) ...
    up    assistant   VornDeviceInfo                notifyVolumeChanged(40)
    down  assistant   VornDeviceCapabilities      ... onSetVolume = true volume 40
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       login(********, ada, true, 1000ms, music) = true
    down  assistant   VornDeviceInfo              getTimezone() threw no clock
          VornDeviceInfo.getTimezone gave threw no clock
          VornDeviceInfo.getVolume gave no instance
  $ sed -E 's/"(time|duration|host|waited)":[0-9]+/"\1":N/g; s/"started":"[^"]*"/"started":"..."/' made
  {"recording":"vorn-speaker","version":2,"started":"...","writer":"vorn-speaker 1.0.0"}
  {"call":1,"time":N,"duration":N,"thread":"assistant","threadNumber":1,"direction":"down","adapter":"VornDeviceInfo","operation":"getVolume","interface":"VornDALImplIF","slot":13,"inside":0,"arguments":[],"result":"30","written":[],"exception":null,"waited":N,"host":N,"reached":true}
  {"call":3,"time":N,"duration":N,"thread":"assistant","threadNumber":1,"direction":"up","adapter":"VornDeviceInfo","operation":"notifyVolumeChanged","interface":"DeviceInfo","slot":41,"inside":1,"arguments":["40"],"result":"","written":[],"exception":null,"waited":N,"host":N,"reached":true}
  {"call":2,"time":N,"duration":N,"thread":"assistant","threadNumber":1,"direction":"down","adapter":"VornDeviceCapabilities","operation":"onSetVolume","interface":"VornDALImplIF","slot":61,"inside":0,"arguments":["40"],"result":"true volume 40","written":[],"exception":null,"waited":N,"host":N,"reached":true}
  {"call":4,"time":N,"duration":N,"thread":"assistant","threadNumber":1,"direction":"down","adapter":"VornEMPAdapterControl","operation":"getEMPAdapter","interface":"VornDALImplIF","slot":33,"inside":0,"arguments":[],"result":"object","written":[],"exception":null,"waited":null,"host":N,"reached":true}
  {"call":5,"time":N,"duration":N,"thread":"assistant","threadNumber":1,"direction":"down","adapter":"VornEMPAdapterControl","operation":"login","interface":"VornEMPAdapterIF","slot":3,"inside":0,"arguments":["********","ada","true","1000ms","music"],"result":"true","written":[],"exception":null,"waited":N,"host":N,"reached":true}
  {"call":6,"time":N,"duration":N,"thread":"assistant","threadNumber":1,"direction":"down","adapter":"VornDeviceInfo","operation":"getTimezone","interface":"VornDALImplIF","slot":15,"inside":0,"arguments":[],"result":"","written":[],"exception":"no clock","waited":N,"host":N,"reached":true}
  $ vorn-speaker --state state replay made
  made:7: Call 6 is answered differently:
    before    VornDeviceInfo.getVolume = 30
    before    VornDeviceCapabilities.onSetVolume 40 = true volume 40
    before    VornEMPAdapterControl.login ******** ada true 1000ms music = true
    called    VornDeviceInfo.getTimezone
    recorded  threw no clock
    now       America/Vancouver
  [1]
