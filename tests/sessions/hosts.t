A host that misbehaves, at every moment, in vorn-conformance.

  $ ask() {
  >   VORN_BAD="$1" vorn-conformance --bound 0.3 --only getVolume/answers "$BAD_HOST" > out 2>&1
  >   echo "== $1: status $?"
  >   grep -v '^  *at \|^    [/_a-z]\|^  [lmr]' out | sed "s|$BAD_HOST|HOST|g; s/^SLOWEST .*/SLOWEST .../"
  > }
  $ for what in abort throw exit hang print; do ask "call $what"; done
  == call abort: status 1
  BROKEN    VornDALImplIF/13/getVolume/answers (getVolume, slot 13)
    seen:   getVolume() ended the process with signal 6 (Aborted)
  SLOWEST ...
  HOST: 1 check, 0 kept, 1 broken, 0 not asked
  == call throw: status 1
  BROKEN    VornDALImplIF/13/getVolume/answers (getVolume, slot 13)
    seen:   getVolume() threw std::runtime_error: "nothing for it"
  SLOWEST ...
  HOST: 1 check, 0 kept, 1 broken, 0 not asked
  == call exit: status 1
  BROKEN    VornDALImplIF/13/getVolume/answers (getVolume, slot 13)
    seen:   getVolume() ended the process with status 0
  SLOWEST ...
  HOST: 1 check, 0 kept, 1 broken, 0 not asked
  == call hang: status 1
  BROKEN    VornDALImplIF/13/getVolume/answers (getVolume, slot 13)
    seen:   getVolume() did not answer within 0.3 s
  SLOWEST ...
  HOST: 1 check, 0 kept, 1 broken, 0 not asked
  == call print: status 0
  the host prints
  the host prints
  the host prints
  the host prints
  the host prints
  the host prints
  the host prints
  the host prints
  SLOWEST ...
  HOST: 1 check, 1 kept, 0 broken, 0 not asked
  $ for when in load make ask destroy unload; do for what in abort exit throw hang; do ask "$when $what"; done; done; ask "finish abort"
  == load abort: status 3
  vorn-conformance: HOST: the library ended the process with signal 6 (Aborted), while HOST was loaded
  == load exit: status 3
  vorn-conformance: HOST: the library ended the process with status 0, while HOST was loaded
  == load throw: status 3
  terminate called after throwing an instance of 'std::runtime_error'
    what():  nothing for it
  vorn-conformance: HOST: the library ended the process with signal 6 (Aborted), while HOST was loaded
  == load hang: status 3
  vorn-conformance: HOST: the library did not answer within 0.3 s, while HOST was loaded
  == make abort: status 3
  vorn-conformance: HOST: vornCreateHost() ended the process with signal 6 (Aborted), while it made a host
  == make exit: status 3
  vorn-conformance: HOST: vornCreateHost() ended the process with status 0, while it made a host
  == make throw: status 3
  vorn-conformance: HOST: vornCreateHost() threw std::runtime_error: "nothing for it", while it made a host
  == make hang: status 3
  vorn-conformance: HOST: vornCreateHost() did not answer within 0.3 s, while it made a host
  == ask abort: status 3
  vorn-conformance: HOST: vornMediaPlayers() ended the process with signal 6 (Aborted), while it made a host
  == ask exit: status 3
  vorn-conformance: HOST: vornMediaPlayers() ended the process with status 0, while it made a host
  == ask throw: status 3
  vorn-conformance: HOST: vornMediaPlayers() threw std::runtime_error: "nothing for it", while it made a host
  == ask hang: status 3
  vorn-conformance: HOST: vornMediaPlayers() did not answer within 0.3 s, while it made a host
  == destroy abort: status 1
  BROKEN    host/loads (the library, slot 0)
    seen:   vornDestroyHost() ended the process with signal 6 (Aborted), while it destroyed a host that was never called
  SLOWEST ...
  HOST: 2 checks, 1 kept, 1 broken, 0 not asked
  == destroy exit: status 1
  BROKEN    host/loads (the library, slot 0)
    seen:   vornDestroyHost() ended the process with status 0, while it destroyed a host that was never called
  SLOWEST ...
  HOST: 2 checks, 1 kept, 1 broken, 0 not asked
  == destroy throw: status 1
  terminate called after throwing an instance of 'std::runtime_error'
    what():  nothing for it
  BROKEN    host/loads (the library, slot 0)
    seen:   vornDestroyHost() ended the process with signal 6 (Aborted), while it destroyed a host that was never called
  SLOWEST ...
  HOST: 2 checks, 1 kept, 1 broken, 0 not asked
  == destroy hang: status 1
  BROKEN    host/loads (the library, slot 0)
    seen:   vornDestroyHost() did not answer within 0.3 s, while it destroyed a host that was never called
  SLOWEST ...
  HOST: 2 checks, 1 kept, 1 broken, 0 not asked
  == unload abort: status 3
  vorn-conformance: HOST: the library ended the process with signal 6 (Aborted), while its process ended
  == unload exit: status 3
  vorn-conformance: HOST: the library ended the process with status 0, while its process ended
  == unload throw: status 3
  terminate called after throwing an instance of 'std::runtime_error'
    what():  nothing for it
  vorn-conformance: HOST: the library ended the process with signal 6 (Aborted), while its process ended
  == unload hang: status 3
  vorn-conformance: HOST: the library did not answer within 0.3 s, while its process ended
  == finish abort: status 3
  vorn-conformance: HOST: the library ended the process with signal 6 (Aborted), while its process ended
What does not answer is waited for once, also when a run goes on where another ended.

  $ hang() { VORN_BAD='call hang' vorn-conformance --bound 0.3 --json lines --only getVolume "$@" "$BAD_HOST" 2>&1 | grep -v '^  *at \|^  [lmr]' | sed "s|$BAD_HOST|HOST|g; s/^SLOWEST .*/SLOWEST .../"; }
  $ hang
  BROKEN    VornDALImplIF/13/getVolume/answers (getVolume, slot 13)
    seen:   getVolume() did not answer within 0.3 s
  NOT ASKED a promise that this one stands on is broken, see VornDALImplIF/13/getVolume/answers
    VornDALImplIF/13/getVolume/again
    VornDALImplIF/13/getVolume/in-sequence
    VornDALImplIF/13/getVolume/stays-out
  SLOWEST ...
  HOST: 4 checks, 0 kept, 1 broken, 3 not asked
  $ sed -i 3,\$d lines
  $ hang --resume
  BROKEN    VornDALImplIF/13/getVolume/answers (getVolume, slot 13)
    seen:   getVolume() did not answer within 0.3 s
  NOT ASKED a promise that this one stands on is broken, see VornDALImplIF/13/getVolume/answers
    VornDALImplIF/13/getVolume/again
    VornDALImplIF/13/getVolume/in-sequence
    VornDALImplIF/13/getVolume/stays-out
  HOST: 4 checks, 0 kept, 1 broken, 3 not asked
The same in vorn-speaker.

  $ echo 'assistant VornDeviceInfo.getVolume' > volume.scenario
  $ play() {
  >   VORN_BAD="$1" vorn-speaker --state state --no-trace --watchdog 1 --host "$BAD_HOST" volume.scenario > out 2>&1
  >   echo "== $1: status $?"
  >   sed '/^Thread/,$d' out | grep '^  down\|^The host\|^the host\|^vorn-speaker:\|No answer\|^An exception' | sed "s|$BAD_HOST|HOST|g"
  > }
  $ for what in abort throw exit hang print ask-again kill; do play "call $what"; done
  == call abort: status 3
  The host crashed: Aborted
  == call throw: status 0
    down  assistant   VornDeviceInfo              getVolume() threw nothing for it
  == call exit: status 3
  The host ended the program, with status 0
  == call hang: status 3
  No answer on the thread assistant within 1 s.
  == call print: status 0
    down  assistant   VornDeviceInfo              getVolume() = 7
  the host prints
  == call ask-again: status 3
  vorn-speaker: vorn doctor: VornDeviceInfo::getInstance() asks for VornDeviceInfo::m_mutex, which its own thread holds in VornDeviceInfo::getVolume().
    down  assistant   VornDeviceInfo              getVolume() threw Resource deadlock avoided
  == call kill: status 3
  The host crashed: Killed
  $ for when in load make ask destroy unload; do for what in abort exit throw hang; do play "$when $what"; done; done; play "finish abort"
  == load abort: status 3
  The host crashed while it was loaded: Aborted
  == load exit: status 3
  The host ended the program while it was loaded, with status 0
  == load throw: status 3
  An exception left the host: nothing for it
  The host crashed while it was loaded: Aborted
  == load hang: status 3
  The host does not return while it was loaded.
  == make abort: status 3
  The host crashed while it was made: Aborted
  == make exit: status 3
  The host ended the program while it was made, with status 0
  == make throw: status 3
  The host threw while it was made: nothing for it
  == make hang: status 3
  The host does not return while it was made.
  == ask abort: status 3
  The host crashed while it was asked for its media players: Aborted
  == ask exit: status 3
  The host ended the program while it was asked for its media players, with status 0
  == ask throw: status 3
  The host threw while it was asked for its media players: nothing for it
  == ask hang: status 3
  The host does not return while it was asked for its media players.
  == destroy abort: status 3
    down  assistant   VornDeviceInfo              getVolume() = 7
  The host crashed while it was destroyed: Aborted
  == destroy exit: status 3
    down  assistant   VornDeviceInfo              getVolume() = 7
  The host ended the program while it was destroyed, with status 0
  == destroy throw: status 3
    down  assistant   VornDeviceInfo              getVolume() = 7
  An exception left the host: nothing for it
  The host crashed while it was destroyed: Aborted
  == destroy hang: status 3
    down  assistant   VornDeviceInfo              getVolume() = 7
  The host does not return while it was destroyed.
  == unload abort: status 3
    down  assistant   VornDeviceInfo              getVolume() = 7
  The host crashed while it was unloaded: Aborted
  == unload exit: status 3
    down  assistant   VornDeviceInfo              getVolume() = 7
  The host ended the program while it was unloaded, with status 0
  == unload throw: status 3
    down  assistant   VornDeviceInfo              getVolume() = 7
  An exception left the host: nothing for it
  The host crashed while it was unloaded: Aborted
  == unload hang: status 3
    down  assistant   VornDeviceInfo              getVolume() = 7
  The host does not return while it was unloaded.
  == finish abort: status 3
    down  assistant   VornDeviceInfo              getVolume() = 7
  The host crashed while it was unloaded: Aborted
The report names functions as they are written.

  $ VORN_BAD='call abort' vorn-speaker --state state --no-trace --host "$BAD_HOST" volume.scenario > out 2>&1
  [3]
  $ grep -x 'Thread.*\|VornDevice.*\|abort' out | sort
  Thread assistant, inside VornDeviceInfo.getVolume
  Thread firmware
  Thread main
  VornDeviceAbstractionLayer::VornDeviceInfo::getVolume()
  abort
A name without a folder is a file of the current folder, whatever else is called so.

  $ mkdir others && cp "$LIBRARY" others/mine.so && cp "$GOOD_HOST" mine.so
  $ export LD_LIBRARY_PATH="$PWD/others"
  $ vorn-conformance --only getVolume/answers mine.so 2>/dev/null | tail -n 1
  mine.so: 1 check, 1 kept, 0 broken, 0 not asked
  $ vorn-speaker --state state --no-trace --host mine.so volume.scenario 2>/dev/null | grep getVolume
    down  assistant   VornDeviceInfo              getVolume() = 7
  VornDeviceInfo.getVolume                                                         1
