What vorn-conformance and vorn-capture make of wrong options.

  $ vorn-conformance
  vorn-conformance: name one library that makes a host; see --help
  [2]
  $ vorn-conformance none.so
  vorn-conformance: none.so cannot be loaded: cannot open shared object file: No such file or directory
  What it needs is looked for in its own runtime path and in LD_LIBRARY_PATH.
  [3]
  $ vorn-conformance "$SOURCE/README.md" 2>&1 | sed "s|$SOURCE|SOURCE|g"
  vorn-conformance: SOURCE/README.md cannot be loaded: invalid ELF header
  What it needs is looked for in its own runtime path and in LD_LIBRARY_PATH.
  $ vorn-conformance --onl x none.so
  vorn-conformance: none.so cannot be loaded: cannot open shared object file: No such file or directory
  What it needs is looked for in its own runtime path and in LD_LIBRARY_PATH.
  [3]
  $ vorn-conformance --only none "$GOOD_HOST"
  vorn-conformance: --only none: no check is named so (--list names them all)
  [2]
  $ vorn-conformance --shard 0/3 none.so
  vorn-conformance: --shard 0/3: give a part and how many there are, as in --shard 2/4
  [2]
  $ vorn-conformance --shard 4/3 none.so
  vorn-conformance: --shard 4/3: give a part and how many there are, as in --shard 2/4
  [2]
  $ vorn-conformance --shard three none.so
  vorn-conformance: --shard three: give a part and how many there are, as in --shard 2/4
  [2]
  $ vorn-conformance --without storage,players none.so
  vorn-conformance: --without players: there is no such area; did you mean player? (--list names them all)
  [2]
  $ vorn-conformance --require volum none.so
  vorn-conformance: --require volum: there is no such area; did you mean volume? (--list names them all)
  [2]
  $ vorn-conformance --bound 0 none.so
  vorn-conformance: --bound 0: give seconds, from 0.001 to 86400
  [2]
  $ vorn-conformance --bound soon none.so
  vorn-conformance: --bound soon: give seconds, from 0.001 to 86400
  [2]
  $ vorn-conformance --setting mode none.so
  vorn-conformance: --setting mode: give a name and two values or more, as in --setting mode=day,night
  [2]
  $ vorn-conformance --setting mode=a none.so
  vorn-conformance: --setting mode=a: give a name and two values or more, as in --setting mode=day,night
  [2]
  $ vorn-conformance --mode =a,b none.so
  vorn-conformance: --mode =a,b: give a name and two values or more, as in --mode mode=day,night
  [2]
  $ vorn-conformance --channel "" none.so
  vorn-conformance: --channel needs a value; see --help
  [2]
  $ vorn-conformance --resume none.so
  vorn-conformance: --resume needs --json FILE, from which it goes on
  [2]
  $ vorn-conformance --junit x --json x none.so
  vorn-conformance: --junit and --json name one file: x; name two
  [2]
  $ vorn-conformance --version | sed 's/[0-9.]*$/N/'
  vorn-conformance N
  $ vorn-conformance --list | sed 's|\(Vorn[^/]*\)/[^/]*/[^/]*/|\1/.../|' | LC_ALL=C sort | uniq -c
        1   remedy: Add one: it stands in where a name is not found.
        1   remedy: Add to the store, do not start it anew.
        1   remedy: Answer "[]" for none.
        1   remedy: Answer an empty map for what you do not have.
        1   remedy: Answer an entry with the key asked for; answer false in writeKeyValue() when you do not store.
        1   remedy: Answer false to what you do not keep.
        1   remedy: Answer false when you do not clear.
        1   remedy: Answer false when you do not remove.
        1   remedy: Answer true at once when the store is open.
        1   remedy: Answer true when sound is on its way.
        1   remedy: Answer true when the entries are stored.
        1   remedy: Answer what is so after the call, not what the call found.
        1   remedy: Assign instead of inserting.
        1   remedy: Assign to the text, and only then answer true.
        1   remedy: Begin anew with each start that you answer true to.
        1   remedy: Begin to tell again where you have stopped it: at the latest with the power.
        1   remedy: Call notifyOOBECancelled() when the user or time ends a setup without success.
        1   remedy: Call strtok_r(), localtime_r() and their like.
        1   remedy: Change every place that keeps an entry, journals and caches too.
        1   remedy: Change it only when no factory is there.
        1   remedy: Change only what a call is about.
        1   remedy: Change the store and hand it to the medium under one mutex, with a file aside that no other call writes.
        6   remedy: Change the value first, then tell once what the getter answers, in the order of the changes.
        3   remedy: Change what the getter reports before you answer true, or answer false.
        1   remedy: Check first, change then.
        1   remedy: Compare keys byte by byte: no folding of case, no trimming, no patterns.
        2   remedy: Configure() runs under the factory's lock: keep the callback, call no factory, and return.
       36   remedy: Convert where the text comes from, and shorten texts between characters.
        1   remedy: Copy what you hand to another thread.
       51   remedy: Copy what you need for later; keep no reference, pointer or c_str().
        2   remedy: Decide for each state of the device what a call means there.
       80   remedy: Decide for each state of the device what the call means there; what makes no sense is refused by an answer.
        1   remedy: Do not take an empty list for all.
        1   remedy: End in the destructor what Configure() began.
        1   remedy: End in the destructor whatever a call may have begun and none has ended.
        4   remedy: Give back what a call took before it returns.
        1   remedy: Give back what a change takes.
        1   remedy: Go on in the file that is in place, not in one that was replaced.
        1   remedy: Go on to the end of the list.
        3   remedy: Go through the whole list.
        1   remedy: Guard the settings with one mutex for both: getSystemSetting() comes without the adapter's.
        1   remedy: Guard the store with one mutex, open() included.
        1   remedy: Guard the store with one mutex, readKeyValue() included.
       65   remedy: Guard what it uses with a mutex of yours. A build with -fsanitize=thread finds the place.
       12   remedy: Guard what operations share with one mutex, take several always in the same order, and hold none while you call an adapter. A build with -fsanitize=thread finds the place.
        1   remedy: Hand out one player that lives as long as the host, not one for each call.
        3   remedy: Hand the change to the medium, as by fsync(), before you answer true.
        1   remedy: Hold one mutex from reading the store to writing it back.
        1   remedy: Keep it for when the mute ends, or answer false.
        1   remedy: Keep nothing back from clear().
        1   remedy: Keep settings and the assistant client's store apart.
        1   remedy: Keep settings by their whole name.
       57   remedy: Keep texts in std::string, not in buffers of a fixed size; look for overflow before you calculate.
        1   remedy: Keep the entry; removing is removeKeyValue().
        1   remedy: Keep the mute in a value of its own beside the volume.
        1   remedy: Keep the store by host, not by thread.
        1   remedy: Keep the store in a file, and find it again when a host is made or opened.
        1   remedy: Keep the value as it is, or answer false.
        1   remedy: Keep the value where getSystemSetting() looks, or answer false.
        2   remedy: Keep what belongs to one call in that call.
        1   remedy: Leave it to the program: a host is one part of it.
        1   remedy: Leave no mark that only an orderly end takes away.
        1   remedy: Leave the entry in the store.
        1   remedy: Leave the store open.
        2   remedy: Let a question change nothing: no flag that it resets, nothing that is handed out once.
        1   remedy: Let both change one value that one thread looks at, not one each.
        1   remedy: Let go in the destructor of what open() took; keep no static flag of the end.
        1   remedy: Let go of your own mutex before you notify, or notify from a thread that holds nothing.
        1   remedy: Let nothing but the stop end what the start began.
       80   remedy: Let nothing grow with the calls; give back what a call took.
        1   remedy: Let the host own them.
        1   remedy: Let the thread look whether it is to go on.
        1   remedy: Look first, answer then.
        1   remedy: Look for it with find(): operator[] of a map makes what it does not find.
        2   remedy: Look for the player by its id in every command.
       51   remedy: Look whether there is a first element before you use it.
        1   remedy: Look whether there is one before you call it.
        1   remedy: Make both from one value.
        1   remedy: Make it in the constructor, or by std::call_once().
        1   remedy: Make the answer anew, or change the field with the setting.
        1   remedy: Make the player with the host, or by std::call_once().
       57   remedy: Never use a text as a format, path or statement; look at a number before you negate or convert it.
        4   remedy: Own one player as long as the host lives, one that answers false if there is none.
        1   remedy: Push from one thread; answer true at once when sound is on its way.
        1   remedy: Push from the start to the stop.
        1   remedy: Push until the stop, silence where there is no other sound.
        1   remedy: Put a player into the table when there is one, not before.
        1   remedy: Read, change and write the volume under one mutex, or in one atomic step.
        1   remedy: Release in the destructor what the constructor took.
        1   remedy: Release only what was taken.
        1   remedy: Remove what equals the key, no more.
        1   remedy: Remove what equals the key: no pattern, no cut, no folding.
        1   remedy: Renew what a getter answers when it changes, or before the answer.
        1   remedy: Replace the value before you answer.
        1   remedy: Report a locale as it was given, or stay with your own.
        1   remedy: Stop and join in the destructor whatever tells.
        1   remedy: Stop and join the thread in the destructor, also when nobody has stopped it.
        1   remedy: Stop and join what the calls started.
        1   remedy: Store all of it, or answer false.
        1   remedy: Store all of them, or answer false.
        1   remedy: Store by length, not as a C string or as lines; answer false to what you cannot store.
        1   remedy: Store bytes, do not convert.
        1   remedy: Store bytes: no lines, escapes, entities, numbers or names of files.
        1   remedy: Store keys and values by length, not as lines or C strings.
        1   remedy: Store what comes, even when it is nothing.
        2   remedy: Take the end of the line off what you read from a file.
        2   remedy: Take the value in every state of the device, or answer false.
        1   remedy: Tell in the one place where the value changes, whatever call has led there.
        1   remedy: Tell the thread to stop and join it when the host ends; hold no mutex while you push.
       80   remedy: Tie no state to a thread; catch what you call throws, and answer with a result instead.
        2   remedy: Tie nothing that a host needs to the first of them: no static thread, no flag of once.
        1   remedy: Tie nothing to the thread of the constructor.
       15   remedy: Use your own state instead of asking the adapter, or ask on another thread and do not wait for it.
        1   remedy: Write a new file aside, hand it to the medium, and rename it over the old one.
        1   remedy: Write to the text only when you are going to answer true.
        1   rule:   A field that reflects a setting follows it.
        1   rule:   A host can be destroyed on another thread than the one that made it.
        1   rule:   A host can be destroyed whatever was called last.
        1   rule:   A host that was called can be destroyed.
        1   rule:   A host that was never called can be destroyed.
        1   rule:   A host whose players were configured can be destroyed.
        1   rule:   A key is removed whatever stands in it, and no other with it.
        1   rule:   A key may stand in the list more than once.
        1   rule:   A key that is not there does not keep the next ones from being removed.
        1   rule:   A key that was never written is not among the answer.
        1   rule:   A key that was removed is not read any more.
        1   rule:   A player is called DefaultMediaPlayer.
        1   rule:   A question that is asked again has the same answer.
        1   rule:   A setting does not change another one.
        1   rule:   A setting is accepted and reported however often it was changed.
        1   rule:   A setting is read while it is changed.
        1   rule:   A setting stays when the store is written or emptied.
        1   rule:   A setting that nobody named is reported too when it was accepted.
        1   rule:   A setting that was accepted is what getSystemSetting() reports.
        1   rule:   A store that was cleared can be used at once.
        1   rule:   A store whose process was killed can be opened again.
        1   rule:   A value in any script is read as it was written.
        1   rule:   A value is read as it was written, whatever some format takes it for.
        1   rule:   A value may hold every byte, NUL included, and is read as it was written.
        1   rule:   A value of a mebibyte is read as it was written.
        1   rule:   A value that was refused is not taken.
        1   rule:   A volume that is set while the speaker is muted is not lost.
        1   rule:   After clearing nothing is left.
        1   rule:   An empty value is a value.
       57   rule:   Any bytes and any number can arrive and are answered: NUL, what is not UTF-8, format directives, the smallest number, not-a-number.
        1   rule:   Arguments are the caller's and end with the call, also for a worker.
        1   rule:   Behind every name of the table stands a player.
        1   rule:   Calls leave no descriptor open.
        1   rule:   Calls leave no memory behind.
        1   rule:   Calls leave no process behind.
        1   rule:   Calls leave no thread behind.
       51   rule:   Empty texts, lists and maps can arrive and are answered.
        1   rule:   Every key of the list is removed.
        1   rule:   Every one of a thousand entries is stored.
        1   rule:   Every one of six hundred keys is removed.
        1   rule:   Every operation answers in any order.
        1   rule:   Every operation answers in the order of a device's day.
        1   rule:   Every player can be configured, by its own name and in place of another.
        1   rule:   Every value that was accepted is reported as it was, long ones and those in any script too.
        1   rule:   Functions of the C library that all threads share a place of are called by one at a time.
        1   rule:   However the process is killed while it writes: what was acknowledged is there, and nothing else is lost.
        2   rule:   It answers a name, and nothing beside it.
        1   rule:   It answers null to no thread.
       80   rule:   It answers on any thread, again and again, without an exception.
       80   rule:   It answers the three-hundredth time as it did the first.
        1   rule:   It answers true when none of the keys is stored, also when none was.
        1   rule:   It answers what is so, not what was so when it was last asked.
       80   rule:   It answers whatever was called before, and twice in a row.
       65   rule:   It comes without a lock: several threads may be inside at once.
        1   rule:   It is never empty.
        1   rule:   It may come on the thread that pushes sound.
        2   rule:   It moves the player that is named, and no other instead.
        1   rule:   It never answers null, however often it is asked.
        1   rule:   It never answers null, whatever was called before.
        1   rule:   It never answers null.
        1   rule:   It opens for the next host of a process as for the first, which keeps what it is given too.
        1   rule:   It runs under the mutex of VornAppMessaging, so it calls no locked operation, CreateInstance(), getInstance() or Shutdown() of it.
        1   rule:   It runs under the mutex of VornCommsManager, so it calls no locked operation, CreateInstance(), getInstance() or Shutdown() of it.
       10   rule:   It runs under the mutex of VornDeviceInfo, so it calls no locked operation, CreateInstance(), getInstance() or Shutdown() of it.
        2   rule:   It runs under the mutex of VornGUIOutput, so it calls no locked operation, CreateInstance(), getInstance() or Shutdown() of it.
        1   rule:   It runs under the mutex of VornLEDController, so it calls no locked operation, CreateInstance(), getInstance() or Shutdown() of it.
       51   rule:   Its arguments are the caller's and end with the call.
        1   rule:   Keys that differ in a single byte are different keys.
        1   rule:   Mutexes are taken in one order, those of the adapters among them.
        1   rule:   No sound is pushed before it is asked for.
        1   rule:   No sound is pushed when it answers false.
        1   rule:   Nothing is left, whatever a key begins with.
        1   rule:   Nothing is told any more when the host has been destroyed.
        1   rule:   Opening a store that is open changes nothing in it.
        1   rule:   Opening comes without a lock, also while others write, and loses nothing of theirs.
        1   rule:   Operations of different adapters may overlap, also locked ones.
        1   rule:   Players can be configured on any thread.
        1   rule:   Reading takes nothing away.
        1   rule:   Removing an empty list changes nothing.
        1   rule:   Removing leaves other keys alone, also those that begin the same.
        1   rule:   Setup that has succeeded is not cancelled.
        1   rule:   Sound ends when it is stopped.
        1   rule:   Sound ends with the host that pushes it.
        1   rule:   Sound is pushed again when it is started after a stop.
        1   rule:   Sound is pushed by the next host of a process as by the first.
        1   rule:   Sound is pushed from one thread, however often it is started.
        1   rule:   Sound is pushed until it is stopped, whatever else is asked.
        1   rule:   Sound is pushed until it is stopped.
        1   rule:   Table and players stay as long as the host, also past the factory's Shutdown().
       36   rule:   Texts in an answer are valid UTF-8.
       57   rule:   Texts of a mebibyte, ten thousand entries and the largest numbers can arrive and are answered.
        1   rule:   The assistant side may ask from inside what it is told.
        1   rule:   The callback may be empty.
        1   rule:   The locale among the facts is the one that getDeviceLocale() answers.
        1   rule:   The mute follows at every volume.
        1   rule:   The table of players stays as it is.
        1   rule:   The value accepted last is the one reported.
        1   rule:   The volume moves the way that was asked, and getVolume() reports it.
        1   rule:   To mute and to unmute leaves the volume where it was.
        1   rule:   What VornAlexaState calls may overlap: locked operations with unlocked ones, unlocked ones with all.
        1   rule:   What VornAudioFocus calls may overlap: locked operations with unlocked ones, unlocked ones with all.
        1   rule:   What VornAudioIn calls may overlap: locked operations with unlocked ones, unlocked ones with all.
        1   rule:   What VornDeviceCapabilities calls may overlap: locked operations with unlocked ones, unlocked ones with all.
        1   rule:   What VornDeviceInfo calls may overlap: locked operations with unlocked ones, unlocked ones with all.
        1   rule:   What VornEMPAdapterControl calls may overlap: locked operations with unlocked ones, unlocked ones with all.
        1   rule:   What VornGUIOutput calls may overlap: locked operations with unlocked ones, unlocked ones with all.
        1   rule:   What VornOOBE calls may overlap: locked operations with unlocked ones, unlocked ones with all.
        1   rule:   What VornStorage calls may overlap: locked operations with unlocked ones, unlocked ones with all.
        1   rule:   What a device is, it is still after every call.
        1   rule:   What belongs to the process stays as it was.
        1   rule:   What is read while others write and remove is what somebody wrote.
        1   rule:   What it hands out is valid while a command runs, also when another thread asks.
        1   rule:   What it hands out is valid, also when two threads ask for the first.
        1   rule:   What nobody set is not there because it was asked for.
        1   rule:   What one thread wrote every other reads.
        1   rule:   What operations share, no two of them touch at once when one of them writes.
        1   rule:   What several threads adjust at once adds up.
        1   rule:   What several threads stored at once is there after the process was killed.
        1   rule:   What several threads write at once is all stored.
        1   rule:   What the first call makes is not touched by the second before it is made.
        1   rule:   What was answered by false is not stored.
        1   rule:   What was asked last holds: sound or none.
        1   rule:   What was cleared is gone after the process was killed.
        1   rule:   What was removed is gone after the process was killed.
        1   rule:   What was set is answered to the first question.
        1   rule:   What was set is answered, whatever was called before.
        1   rule:   What was set stays, whatever is asked.
        1   rule:   What was stored after a removal or clearing is there for the next process too.
        1   rule:   What was stored is there after the process was killed.
        1   rule:   What was stored is there for the host of the next process.
        1   rule:   What was stored is there for the next process, whatever bytes, sizes and numbers.
        1   rule:   What was written is read until it is replaced, removed or cleared.
        1   rule:   What writeKeyValue() answered true to can be read under its key.
        1   rule:   When a host is destroyed the next one can be made and used.
        1   rule:   When it answers false the caller's text is as it was.
        1   rule:   When it answers true the caller's text is the setting, whatever it was before.
        1   rule:   Who follows the assistant's locale reports it.
        1   rule:   Who reads has the entry of his key, whatever others read meanwhile.
        1   rule:   Who reads has the setting that he names, whatever others read meanwhile.
        1   rule:   Who tells of a change tells of it in the next host of a process too.
        1   rule:   Who tells of a change tells of it too after every other call.
        1   rule:   Who tells of it tells what was set.
        1   rule:   Who tells of settings tells of each change, once, with what getSystemSetting() answers.
        1   rule:   Who tells of the locale tells of each change, once, with what getDeviceLocale() answers.
        1   rule:   Who tells of the mute tells of each change, once, with what getMuteStatus() answers.
        2   rule:   Who tells of the volume tells of each change, once, with what getVolume() answers.
        1   rule:   Who tells of volume and mute when they are set tells too when another call moves them.
        1   rule:   Writing a key that exists replaces its value.
        1   rule:   Writing an empty map changes nothing.
        1   rule:   Writing leaves other keys alone.
        1   rule:   getMuteStatus() reports what was set.
        1   rule:   getVolume() follows what is set, on its own scale, steps and limits.
        1 Areas: calls cards channels focus inputs lights logs media-players messages microphone modes mute playback player recording settings setup storage volume
        1 VornDALImplIF/.../absent
        1 VornDALImplIF/.../after-others
        1 VornDALImplIF/.../after-use
       65 VornDALImplIF/.../again
        1 VornDALImplIF/.../agrees
        2 VornDALImplIF/.../anew
       64 VornDALImplIF/.../answers
        1 VornDALImplIF/.../any-order
        2 VornDALImplIF/.../any-thread
        1 VornDALImplIF/.../any-volume
        1 VornDALImplIF/.../apart
        1 VornDALImplIF/.../as-written
        1 VornDALImplIF/.../asked
        1 VornDALImplIF/.../asked-again
        1 VornDALImplIF/.../asked-back
        1 VornDALImplIF/.../asked-unknown
        3 VornDALImplIF/.../at-once
        1 VornDALImplIF/.../at-once-killed
        1 VornDALImplIF/.../clears
       49 VornDALImplIF/.../concurrent
        1 VornDALImplIF/.../day
        1 VornDALImplIF/.../descriptors
        1 VornDALImplIF/.../difficult
       35 VornDALImplIF/.../empty-arguments
        1 VornDALImplIF/.../empty-list
        1 VornDALImplIF/.../empty-map
        1 VornDALImplIF/.../empty-value
        1 VornDALImplIF/.../ends
        1 VornDALImplIF/.../every-byte
        1 VornDALImplIF/.../facts
        1 VornDALImplIF/.../first
        1 VornDALImplIF/.../first-calls
        1 VornDALImplIF/.../follows
        1 VornDALImplIF/.../follows-unasked
        1 VornDALImplIF/.../from-inside
        1 VornDALImplIF/.../goes-on
        1 VornDALImplIF/.../host-gone
       41 VornDALImplIF/.../hostile-arguments
        1 VornDALImplIF/.../in-any-order
        1 VornDALImplIF/.../in-any-state
       64 VornDALImplIF/.../in-sequence
        1 VornDALImplIF/.../in-use
        1 VornDALImplIF/.../invents-nothing
        1 VornDALImplIF/.../keeps
        1 VornDALImplIF/.../keys-apart
        4 VornDALImplIF/.../killed
        1 VornDALImplIF/.../killed-writing
       41 VornDALImplIF/.../large-arguments
        1 VornDALImplIF/.../last-reported
        2 VornDALImplIF/.../leaves-others
        1 VornDALImplIF/.../leaves-text
       36 VornDALImplIF/.../lets-go
        1 VornDALImplIF/.../lock-order
        1 VornDALImplIF/.../long-value
        2 VornDALImplIF/.../many
        1 VornDALImplIF/.../meanwhile
        1 VornDALImplIF/.../memory
        1 VornDALImplIF/.../muted
        2 VornDALImplIF/.../name
        1 VornDALImplIF/.../never-empty
        1 VornDALImplIF/.../never-null
        1 VornDALImplIF/.../never-null-after-many
        1 VornDALImplIF/.../never-null-after-use
        1 VornDALImplIF/.../never-null-any-thread
        1 VornDALImplIF/.../new-host
        1 VornDALImplIF/.../next-host
        2 VornDALImplIF/.../odd-keys
        1 VornDALImplIF/.../often
        1 VornDALImplIF/.../one-thread
        1 VornDALImplIF/.../past-absent
        1 VornDALImplIF/.../processes
        1 VornDALImplIF/.../quiet
        1 VornDALImplIF/.../races
        1 VornDALImplIF/.../reads-again
        1 VornDALImplIF/.../reads-written
        1 VornDALImplIF/.../reflects
        3 VornDALImplIF/.../refused
        1 VornDALImplIF/.../removes
        1 VornDALImplIF/.../removes-all
        1 VornDALImplIF/.../replaces
        1 VornDALImplIF/.../replaces-text
        5 VornDALImplIF/.../reported
        1 VornDALImplIF/.../set-up
        1 VornDALImplIF/.../static-places
        1 VornDALImplIF/.../stays
       15 VornDALImplIF/.../stays-out
        1 VornDALImplIF/.../store-apart
        1 VornDALImplIF/.../surroundings
        1 VornDALImplIF/.../tells-anew
        1 VornDALImplIF/.../tells-each
        1 VornDALImplIF/.../tells-on
        4 VornDALImplIF/.../threads
        1 VornDALImplIF/.../together
        1 VornDALImplIF/.../together-VornAlexaState
        1 VornDALImplIF/.../together-VornAudioFocus
        1 VornDALImplIF/.../together-VornAudioIn
        1 VornDALImplIF/.../together-VornDeviceCapabilities
        1 VornDALImplIF/.../together-VornDeviceInfo
        1 VornDALImplIF/.../together-VornEMPAdapterControl
        1 VornDALImplIF/.../together-VornGUIOutput
        1 VornDALImplIF/.../together-VornOOBE
        1 VornDALImplIF/.../together-VornStorage
        6 VornDALImplIF/.../told
        1 VornDALImplIF/.../twice
        1 VornDALImplIF/.../unasked
        1 VornDALImplIF/.../unnamed
        1 VornDALImplIF/.../unused
        1 VornDALImplIF/.../usable
       35 VornDALImplIF/.../utf8
        1 VornDALImplIF/.../utf8-value
        1 VornDALImplIF/.../volume
        1 VornDALImplIF/.../while-written
        1 VornDALImplIF/.../whole
        1 VornDalMediaPlayerInterfaceImpl/.../answers
        1 VornDalMediaPlayerInterfaceImpl/.../any-thread
        1 VornDalMediaPlayerInterfaceImpl/.../default
        1 VornDalMediaPlayerInterfaceImpl/.../destroyed
        1 VornDalMediaPlayerInterfaceImpl/.../no-callback
        1 VornDalMediaPlayerInterfaceImpl/.../players
        1 VornDalMediaPlayerInterfaceImpl/.../stays
        1 VornDalMediaPlayerInterfaceImpl/.../table
       16 VornEMPAdapterIF/.../again
       16 VornEMPAdapterIF/.../answers
       16 VornEMPAdapterIF/.../concurrent
       16 VornEMPAdapterIF/.../empty-arguments
       16 VornEMPAdapterIF/.../hostile-arguments
       16 VornEMPAdapterIF/.../in-sequence
       16 VornEMPAdapterIF/.../large-arguments
       16 VornEMPAdapterIF/.../lets-go
        2 VornEMPAdapterIF/.../named
        1 VornEMPAdapterIF/.../of-now
        1 VornEMPAdapterIF/.../utf8
  $ vorn-capture
  vorn-capture: where to? Name a file with -o
  [2]
  $ vorn-capture -o
  vorn-capture: -o: expected a value after it
  [2]
  $ vorn-capture -o x
  vorn-capture: what to run? Name a program after the options
  [2]
  $ vorn-capture -o x none
  vorn-capture: none: no such program in PATH
  [2]
  $ vorn-capture -o x "$SOURCE/README.md" 2>&1 | sed "s|$SOURCE|SOURCE|g"
  vorn-capture: SOURCE/README.md: Permission denied
  $ vorn-capture -o none/x true 2>&1 | sed "s|$PWD|.|"
  vorn-capture: ./none/: No such file or directory
  $ vorn-capture -o "$SOURCE/README.md" true 2>&1 | sed "s|$SOURCE|SOURCE|"
  vorn-capture: SOURCE/README.md: is there already and is no recording; choose another name
  $ vorn-capture -o x --keep lots true
  vorn-capture: --keep lots: expected a size from 64K, such as 500K, 64M or 2G
  [2]
  $ vorn-capture -o x --keep 1 true
  vorn-capture: --keep 1: expected a size from 64K, such as 500K, 64M or 2G
  [2]
  $ vorn-capture -o x --toggle NONE true
  vorn-capture: --toggle NONE: expected a signal that ends nothing by itself when it is handled: USR1, USR2, HUP, WINCH, URG, CONT, ALRM, IO or PWR
  [2]
  $ vorn-capture -o x --toggle KILL true
  vorn-capture: --toggle KILL: expected a signal that ends nothing by itself when it is handled: USR1, USR2, HUP, WINCH, URG, CONT, ALRM, IO or PWR
  [2]
  $ vorn-capture -o x --ring 1 true
  vorn-capture: --ring 1: expected a size from 64K, such as 500K, 64M or 2G
  [2]
  $ vorn-capture -o x --library none true
  vorn-capture: none: No such file or directory
  [2]
  $ vorn-capture -o x --no-such true
  vorn-capture: --no-such: is not known (vorn-capture --help names the options)
  [2]
  $ vorn-capture -o x true
  vorn-capture: /usr/bin/true: does not load libVornDALImpl.so at its start; should it load one later whose strings are old, name that with --library
  libvorn-capture.so: nothing is recorded: the program made no call of libVornDALImpl.so
  $ vorn-capture -o x false
  vorn-capture: /usr/bin/false: does not load libVornDALImpl.so at its start; should it load one later whose strings are old, name that with --library
  libvorn-capture.so: nothing is recorded: the program made no call of libVornDALImpl.so
  [1]
  $ vorn-capture --version | sed 's/[0-9.]*$/N/'
  vorn-capture N
