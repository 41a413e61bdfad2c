Recordings that others wrote, or hands.

  $ calls() {
  >   printf '\357\273\277{"recording":"vorn-speaker","version":2,"program":"hub","started":7,"kept":"by hand"}\n'
  >   cat <<'LINES'
  > {"call":1,"time":0,"duration":40,"thread":"client","direction":"life","adapter":"VornOOBE","operation":"CreateInstance","interface":"","slot":0,"inside":0,"arguments":[],"result":"","written":[],"exception":null}
  > {"call":2,"time":50,"duration":90,"thread":"client","direction":"down","adapter":"VornOOBE","operation":"sendCBLInfo","interface":"VornDALImplIF","slot":31,"inside":0,"arguments":["a","b","7"],"result":"","written":["code=c","url=d","number=8"],"exception":null,"host":70}
  > {"leftOut":2,"time":150}
  > {"call":5,"time":200,"duration":10,"thread":"client","direction":"up","adapter":"VornTemplateRuntime","operation":"sendData","interface":"AttachmentWriter","slot":3,"inside":0,"arguments":["[1, 2]"],"result":"2","written":[],"exception":null}
  > {"call":6,"time":210,"duration":10,"thread":"client","direction":"up","adapter":"VornTemplateRuntime","operation":"sendData","interface":"AttachmentWriter","slot":3,"inside":0,"arguments":["[3]"],"result":"1","written":[],"exception":null}
  > {"call":7,"time":220,"duration":30,"thread":"sound","direction":"up","adapter":"VornAudioIn","operation":"sendAudioData","interface":"AudioIn","slot":11,"inside":0,"arguments":["[-40000, 3, x-, -]"],"result":"","written":[],"exception":null}
  > {"call":8,"time":260,"duration":30,"thread":"sound","direction":"up","adapter":"VornAudioIn","operation":"sendAudioData","interface":"AudioIn","slot":11,"inside":0,"arguments":[],"result":"","written":[],"exception":null}
  > {"call":9,"time":300,"duration":5,"thread":"client","direction":"own","adapter":"Old_Adapter_2","operation":"getValue","interface":"","slot":0,"inside":0,"arguments":["\"\""],"result":"false","written":[],"exception":""}
  > {}
  > {"lamp":"on","time":400}
  > {"lamp":"off","time":500}
  > {"note":"done","time":600}
  > LINES
  > }
  $ calls > odd
  $ vorn-speaker report odd
  odd:11: passed over, a line that begins with lamp is not known; lines that have it: 2
  odd:10: passed over, a line that begins with nothing is not known; lines that have it: 1
  odd: calls that could not be kept when they came: 2
  assistant          firmware
      |                  |  VornOOBE.CreateInstance
      |----------------->|  VornOOBE.sendCBLInfo a b 7 = code=c url=d number=8
      |<-----------------|  VornTemplateRuntime.sendData [1, 2] = 2
      |<-----------------|  VornAudioIn.sendAudioData [-40000, 3, x-, -]
      |                  |  Old_Adapter_2.getValue "" = threw 
  
  Microseconds                                                                   calls   least  median    90 %    99 %    most
        Old_Adapter_2.getValue                                                       1       5       5       5       5       5
        VornOOBE.CreateInstance                                                      1      40      40      40      40      40
  down  VornOOBE.sendCBLInfo                                                         1      90      90      90      90      90
  up    VornAudioIn.sendAudioData                                                    2      30      30      30      30      30
  up    VornTemplateRuntime.sendData                                                 2      10      10      10      10      10
  
  After 600 microseconds: done
  $ vorn-speaker export --format mermaid odd 2> /dev/null
  %% Made by vorn-speaker
  sequenceDiagram
    participant t1 as thread client
    participant t2 as thread sound
    participant assistantSide as assistant side
    participant host as host
    participant library as library
    t1->>library: VornOOBE.CreateInstance
    t1->>host: VornOOBE.sendCBLInfo a b 7
    host-->>t1: code=c url=d number=8
    note over t1: calls that could not be kept#58; 2
    t1->>assistantSide: VornTemplateRuntime.sendData [1, 2]
    assistantSide-->>t1: 2
    t1->>assistantSide: VornTemplateRuntime.sendData [3]
    assistantSide-->>t1: 1
    t2->>assistantSide: VornAudioIn.sendAudioData [2 samples]
    t2->>assistantSide: VornAudioIn.sendAudioData
    t1->>library: Old_Adapter_2.getValue #34;#34;
    library--xt1: threw 
    note over t1: done
  $ vorn-speaker export --format csv odd 2> /dev/null
  call,time,duration,thread,threadNumber,direction,adapter,operation,interface,slot,inside,arguments,result,written,exception,waited,host,reached\r (esc)
  1,0,40,client,1,life,VornOOBE,CreateInstance,,0,0,[],,[],,,,\r (esc)
  2,50,90,client,1,down,VornOOBE,sendCBLInfo,VornDALImplIF,31,0,"[""a"",""b"",""7""]",,"[""code=c"",""url=d"",""number=8""]",,,70,\r (esc)
  5,200,10,client,1,up,VornTemplateRuntime,sendData,AttachmentWriter,3,0,"[""[1, 2]""]",2,[],,,,\r (esc)
  6,210,10,client,1,up,VornTemplateRuntime,sendData,AttachmentWriter,3,0,"[""[3]""]",1,[],,,,\r (esc)
  7,220,30,sound,2,up,VornAudioIn,sendAudioData,AudioIn,11,0,"[""[-40000, 3, x-, -]""]",,[],,,,\r (esc)
  8,260,30,sound,2,up,VornAudioIn,sendAudioData,AudioIn,11,0,[],,[],,,,\r (esc)
  9,300,5,client,1,own,Old_Adapter_2,getValue,,0,0,"[""\\""\\""""]",false,[],,,,\r (esc)
  $ vorn-speaker export --format trace-event odd 2> /dev/null
  {"otherData":{"exporter":"vorn-speaker","program":"hub","started":"","writer":""},"displayTimeUnit":"ms","traceEvents":[
  {"ph":"M","name":"process_name","cat":"__metadata","pid":1,"tid":0,"ts":0,"args":{"name":"hub"}},
  {"ph":"M","name":"thread_name","cat":"__metadata","pid":1,"tid":1,"ts":0,"args":{"name":"client"}},
  {"ph":"M","name":"thread_name","cat":"__metadata","pid":1,"tid":2,"ts":0,"args":{"name":"sound"}},
  {"ph":"X","name":"VornOOBE.CreateInstance","cat":"life","pid":1,"tid":1,"ts":0,"dur":40,"args":{"call":1,"arguments":[]}},
  {"ph":"X","name":"VornOOBE.sendCBLInfo","cat":"down","pid":1,"tid":1,"ts":50,"dur":90,"args":{"call":2,"arguments":["a","b","7"],"written":["code=c","url=d","number=8"],"host":70}},
  {"ph":"X","name":"VornTemplateRuntime.sendData","cat":"up","pid":1,"tid":1,"ts":200,"dur":10,"args":{"call":5,"arguments":["[1, 2]"],"result":"2"}},
  {"ph":"X","name":"VornTemplateRuntime.sendData","cat":"up","pid":1,"tid":1,"ts":210,"dur":10,"args":{"call":6,"arguments":["[3]"],"result":"1"}},
  {"ph":"X","name":"VornAudioIn.sendAudioData","cat":"up","pid":1,"tid":2,"ts":220,"dur":30,"args":{"call":7,"arguments":["[2 samples]"]}},
  {"ph":"C","name":"sound sound","cat":"sound","pid":1,"tid":2,"ts":220,"args":{"peak":32768,"level":28284}},
  {"ph":"X","name":"VornAudioIn.sendAudioData","cat":"up","pid":1,"tid":2,"ts":260,"dur":30,"args":{"call":8,"arguments":[]}},
  {"ph":"X","name":"Old_Adapter_2.getValue","cat":"own","pid":1,"tid":1,"ts":300,"dur":5,"args":{"call":9,"arguments":["\"\""],"result":"false","exception":""}},
  {"ph":"i","name":"calls that could not be kept: 2","cat":"note","pid":1,"tid":0,"ts":150,"s":"g","args":{}},
  {"ph":"i","name":"done","cat":"note","pid":1,"tid":0,"ts":600,"s":"g","args":{}}
  ]}
  $ vorn-speaker replay odd
  odd:11: passed over, a line that begins with lamp is not known; lines that have it: 2
  odd:10: passed over, a line that begins with nothing is not known; lines that have it: 1
  odd: calls that could not be kept when they came: 2
  odd:3: Call 2 is answered differently:
    called    VornOOBE.sendCBLInfo a b 7
    recorded  code=c url=d number=8
    now       no result
  [1]

Which calls are meant.

  $ for calls in '' - 0 2x 2-x x-2 1-2-3 +1 ' 2' 99999999999999999999 9-2; do
  >   vorn-speaker report --calls "$calls" odd 2>&1 | head -n 1
  > done
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found ""
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found -
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found 0
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found 2x
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found 2-x
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found x-2
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found 1-2-3
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found +1
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found  2
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found 99999999999999999999
  vorn-speaker: expected numbers of calls such as 7, 7-9, 7- or -9, found 9-2
  $ for calls in 2 2-5 8- -1 00002 10-; do
  >   vorn-speaker export --format csv --calls "$calls" odd 2> /dev/null | cut -d, -f1 | tr '\r\n' '  '
  >   echo
  > done
  call 2 
  call 2 5 
  call 8 9 
  call 1 
  call 2 
  call 
  $ for adapter in '' VornOOB vornoobe VornSetup nothing; do
  >   vorn-speaker report --adapter "$adapter" odd 2>&1 | head -n 1
  > done
  vorn-speaker: expected an adapter, found ""
  vorn-speaker: expected an adapter, found VornOOB; did you mean VornOOBE?
  vorn-speaker: expected an adapter, found vornoobe; did you mean VornOOBE?
  vorn-speaker: expected an adapter, found VornSetup
  vorn-speaker: expected an adapter, found nothing

Fields that hold something else, each in its line.

  $ line='{"call":1,"time":0,"duration":40,"thread":"client","direction":"down","adapter":"VornOOBE","operation":"sendCBLInfo","interface":"VornDALImplIF","slot":31,"inside":0,"arguments":["a"],"result":"","written":[],"exception":null}'
  $ for change in call:0 call:-1 call:1.5 'call:"1"' time:-1 time:1e400 duration:true 'thread:["a"]' threadNumber:0 'direction:"sideways"' 'adapter:""' 'adapter:"a b"' 'adapter:"a-b"' 'adapter:"@"' 'adapter:"/"' 'adapter:":"' 'adapter:"["' 'adapter:"{"' 'operation:7' 'interface:"%"' slot:-1 slot:1000000 inside:1000000000 'arguments:"a"' 'arguments:["a b"]' 'arguments:["[1"]' 'arguments:[""]' result:null written:null exception:false waited:-1 waited:null host:0.5 reached:0 reached:null 'reached:"yes"'; do
  >   field=${change%%:*}
  >   { echo '{"recording":"vorn-speaker","version":2}'; echo "$line" | sed "s/\"$field\":\(\[[^]]*\]\|[^,}]*\)/\"$field\":FILL/; t end; s/}\$/,\"$field\":FILL}/; :end" | sed "s|FILL|$(echo "${change#*:}" | sed 's/[&|]/\\&/g')|"; } > other
  >   echo "$change $(vorn-speaker export --format csv other 2>&1 > /dev/null)"
  > done
  call:0 vorn-speaker: other:2: expected a line of a recording; the field call: expected a whole number from 1, found 0
  call:-1 vorn-speaker: other:2: expected a line of a recording; the field call: expected a whole number from 1, found -1
  call:1.5 vorn-speaker: other:2: expected a line of a recording; the field call: expected a whole number from 1, found 1.5
  call:"1" vorn-speaker: other:2: expected a line of a recording; the field call: expected a whole number from 1, found "1"
  time:-1 vorn-speaker: other:2: expected a line of a recording; the field time: expected a whole number from 0 to 1000000000000000, found -1
  time:1e400 vorn-speaker: other:2: expected a line of a recording; a number is too large
  duration:true vorn-speaker: other:2: expected a line of a recording; the field duration: expected a whole number from 0 to 1000000000000000, found true
  thread:["a"] vorn-speaker: other:2: expected a line of a recording; the field thread: expected a text, found an array
  threadNumber:0 vorn-speaker: other:2: expected a line of a recording; the field threadNumber: expected a whole number from 1 to 1000000000, found 0
  direction:"sideways" vorn-speaker: other:2: expected a line of a recording; the field direction: expected down, up, life or own, found "sideways"
  adapter:"" vorn-speaker: other:2: expected a line of a recording; the field adapter: expected a name, found ""
  adapter:"a b" vorn-speaker: other:2: expected a line of a recording; the field adapter: expected a name, found "a b"
  adapter:"a-b" vorn-speaker: other:2: expected a line of a recording; the field adapter: expected a name, found "a-b"
  adapter:"@" vorn-speaker: other:2: expected a line of a recording; the field adapter: expected a name, found "@"
  adapter:"/" vorn-speaker: other:2: expected a line of a recording; the field adapter: expected a name, found "/"
  adapter:":" vorn-speaker: other:2: expected a line of a recording; the field adapter: expected a name, found ":"
  adapter:"[" vorn-speaker: other:2: expected a line of a recording; the field adapter: expected a name, found "["
  adapter:"{" vorn-speaker: other:2: expected a line of a recording; the field adapter: expected a name, found "{"
  operation:7 vorn-speaker: other:2: expected a line of a recording; the field operation: expected a text, found 7
  interface:"%" vorn-speaker: other:2: expected a line of a recording; the field interface: expected a name, found "%"
  slot:-1 vorn-speaker: other:2: expected a line of a recording; the field slot: expected a whole number from 0 to 1000, found -1
  slot:1000000 vorn-speaker: other:2: expected a line of a recording; the field slot: expected a whole number from 0 to 1000, found 1000000
  inside:1000000000 vorn-speaker: other:2: expected a line of a recording; the field inside: expected a whole number from 0 to 1000000, found 1000000000
  arguments:"a" vorn-speaker: other:2: expected a line of a recording; the field arguments: expected a list of texts, found "a"
  arguments:["a b"] vorn-speaker: other:2: expected a line of a recording; the field arguments: expected values as a scenario holds them, found ********
  arguments:["[1"] vorn-speaker: other:2: expected a line of a recording; the field arguments: expected values as a scenario holds them, found ********
  arguments:[""] vorn-speaker: other:2: expected a line of a recording; the field arguments: expected values as a scenario holds them, found ********
  result:null vorn-speaker: other:2: expected a line of a recording; the field result: expected a text, found null
  written:null vorn-speaker: other:2: expected a line of a recording; the field written: expected a list of texts, found null
  exception:false vorn-speaker: other:2: expected a line of a recording; the field exception: expected a text, found false
  waited:-1 vorn-speaker: other:2: expected a line of a recording; the field waited: expected a whole number from 0 to 1000000000000000, found -1
  waited:null 
  host:0.5 vorn-speaker: other:2: expected a line of a recording; the field host: expected a whole number from 0 to 1000000000000000, found 0.5
  reached:0 vorn-speaker: other:2: expected a line of a recording; the field reached: expected true, false or null, found 0
  reached:null 
  reached:"yes" vorn-speaker: other:2: expected a line of a recording; the field reached: expected true, false or null, found "yes"

First lines.

  $ for first in '' '{}' '[]' '7' '{"recording":"vorn-speaker"}' '{"recording":"vorn-speaker","version":0}' '{"recording":"vorn-speaker","version":"2"}' '{"recording":"vorn-speaker","version":3}' '{"recording":"other","version":2}' '{"version":2}' '{"recording":"vorn-speaker","version":2' '{"recording":"vorn-speaker","version":1}'; do
  >   echo "$first" > other
  >   echo "$first: $(vorn-speaker report other 2>&1 | head -n 1)"
  > done
  : vorn-speaker: other:1: expected a recording of version 1 to 2
  {}: vorn-speaker: other:1: expected a recording of version 1 to 2
  []: vorn-speaker: other:1: expected a recording of version 1 to 2
  7: vorn-speaker: other:1: expected a recording of version 1 to 2
  {"recording":"vorn-speaker"}: vorn-speaker: other:1: expected a recording of version 1 to 2
  {"recording":"vorn-speaker","version":0}: vorn-speaker: other:1: expected a recording of version 1 to 2
  {"recording":"vorn-speaker","version":"2"}: vorn-speaker: other:1: expected a recording of version 1 to 2
  {"recording":"vorn-speaker","version":3}: vorn-speaker: other:1: expected a recording of version 1 to 2
  {"recording":"other","version":2}: vorn-speaker: other:1: expected a recording of version 1 to 2
  {"version":2}: vorn-speaker: other:1: expected a recording of version 1 to 2
  {"recording":"vorn-speaker","version":2: vorn-speaker: other:1: expected a recording of version 1 to 2
  {"recording":"vorn-speaker","version":1}: assistant          firmware
