// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/rules.h"

#include <algorithm>

#include "mqam/explain/text_match.h"

namespace mqam {

namespace {

constexpr LoadRule kRules[] = {
    {"H1", "", "Call GetPos right after Open, before the first Read.",
     "An attempt that starts with SetPos follows H5 instead. Until the first checkpoint, messages are "
     "read outside a unit of work and saved nowhere, so a crash loses them.",
     ""},
    {"H2", "",
     "After GetPos, make the target and then the position durable before you call Read, GetPos or SetPos "
     "again.",
     "The next of these calls carries the checkpoint out and empties the checkpoint file. SetPos refuses "
     "a position that is older than the file, so a record that is not in the target by then is lost.",
     ""},
    {"H3", "", "Store every position that GetPos returns, even if its sequence number is already stored.",
     "After SetPos on a file that is one checkpoint older, GetPos returns the same number with a "
     "different meaning.",
     ""},
    {"H4", "", "Call GetPos only if a record has arrived since the last checkpoint.",
     "The GetPos of H1 is the only exception. Two calls in a row, or a call at the end of a replay, "
     "return an offset at which no record of the file begins. A later SetPos with it continues in the "
     "middle of a record.",
     ""},
    {"H5", "",
     "After SetPos, call GetPos when at least one record was read, and before a Read goes beyond the "
     "checkpoint file.",
     "Until a checkpoint has run, records read from the queue are neither saved nor committed, so they "
     "arrive again although they were loaded. At least one record must be read first, because otherwise "
     "the position would not identify a record (H4). `mqam` calls GetPos once, after the last record of the "
     "file, whose number it knows from inspecting the file: when the checkpoint then replaces the file, "
     "every record of it is durable in the target.",
     ""},
    {"H6", "", "Use `TDM YES`, end the attempt at every end of input, and end it with Close.",
     "Let another attempt find out whether this was the end of the load. A crash between saving and "
     "committing leaves a message both in the file and on the queue. The module recognises the "
     "redelivery and reports an end of input, leaving the get uncommitted; Close commits it. If you read "
     "on, later commits are out of order. Without Close, every following attempt ends at the same "
     "message.",
     ""},
    {"H7", "", "If the checkpoint file holds no complete record, call Open and GetPos, not SetPos.",
     "This applies to a file of 0 bytes, a file that holds only its header, and a file whose first "
     "record is torn. A crash inside a rewrite leaves such a file. Everything up to the stored position "
     "is loaded and nothing was taken after it, but SetPos would refuse the file.",
     ""},
    {"H8", "", "Look for temporary files before Open.",
     "If the checkpoint file is missing and there is one complete `MQAMtmp.*`, rename that one to the "
     "checkpoint file. If both exist, delete the temporary file. If neither exists although a position "
     "is stored, refuse to start. A rewrite during a replay deletes the old file before it renames the "
     "new one. Open would create an empty file, and the temporary file is the only copy of its records.",
     ""},
    {"H9", "", "After a failure code from Read or GetPos, end the process.",
     "The checkpoint file may be positioned after records that were not delivered yet, or before a torn "
     "record.",
     ""},
    {"H10", "", "End the process after a failed save too, even if the message was backed out successfully.",
     "The next Read would take the redelivered message for a duplicate. If the back-out failed as well, "
     "the next commit would commit the message.",
     ""},
    {"H11", "", "After a failure, end the process without calling Close or Shut.",
     "Both disconnect, and MQDISC commits, including a message that was got and never delivered (for "
     "example one that came with a warning). MQ backs out what a dying process leaves uncommitted.",
     ""},
    {"H12", "", "After return code 55 (time-out), do not call Read again in this process.",
     "The time-out is never cleared; a later Read takes a message from the queue and drops it.", ""},
    {"H13", "", "Make one attempt per process, and put `PRESERVE_RESTART_INFO YES` right after Init.",
     "After any Close, even one that follows a failed connect, the next Open discards the checkpoint "
     "file. Close deletes the file unless the attribute is set.",
     ""},
    {"H14", "", "Do nothing about a checkpoint that is still pending at Close.",
     "SetPos finds its record by the offset in the older file. Carrying the checkpoint out before Close "
     "does harm (H25).",
     ""},
    {"H15", "", "Ignore a record of length 0.",
     "A checkpoint taken during a replay, before any record was read, puts an empty record into the "
     "file.",
     ""},
    {"H16", "", "Call GetPos only between Open and Close.",
     "Open sets the sequence number back to 0, so the file would carry another number than the position.",
     ""},
    {"H17", "", "After a failed SetPos, end the process.",
     "SetPos has already changed counters and the choice of syncpoint. Read would go to the queue, and "
     "the next rewrite would drop the records of the file.",
     ""},
    {"H18", "", "Give each load its own `CKFILE` and record its name in the restart information.",
     "Lock both for as long as the process lives, and hold a second lock for as long as your command "
     "runs, so that no other command takes over between two attempts. Compare the first replayed record "
     "with the length and digest of the last stored one. Discard positions when the load ends. Neither "
     "the file nor the position says which load it belongs to.",
     ""},
    {"H19", "", "Do not assume that a record in the checkpoint file survives a power failure.",
     "The module flushes the file to the operating system and never calls `fsync`. Use the journal library "
     "(docs/hosts.md, \"Surviving a power failure\"), or accept L5.",
     ""},
    {"H20", "", "Never treat an end of input that came before `RWAIT` had passed as the end of the load.",
     "An empty message ends the input just as a duplicate does, and Close removes it from the queue.", ""},
    {"H21", "", "Give `MQEX` in every attempt.",
     "Until the queue manager has noticed that an attempt is over, its uncommitted messages are "
     "invisible but not yet back, and the next attempt would skip them. With `MQEX`, Open waits or fails "
     "with reason 2042.",
     ""},
    {"H22", "", "Cut a torn record off the end of the checkpoint file before Open.",
     "It was never committed, so it is still on the queue. If it stays in the file, every replay fails.", ""},
    {"H23", "", "Call the load done only after a Close without error.",
     "MQGET on a broken connection looks like the end of the input.", ""},
    {"H24", "", "Store \"finished\", with the target synced, before you delete the checkpoint file.",
     "An attempt that finds \"finished\" stores it again first, because the previous one may have died "
     "before it reached the disk. Store a new load before you touch its target. A load without a stored "
     "position has not begun, so start it from scratch. A position is useless without its checkpoint "
     "file, and data that was in the target before the first position does not belong to the load.",
     ""},
    {"H25", "", "Do not call GetPos at an end of input.",
     "If the checkpoint stays pending, its offset is after the last record. If it is carried out, its "
     "rewrite runs while a duplicate is still uncommitted, and a crash in it removes the record by which "
     "the duplicate is recognised. The next attempt replays whatever came after the last checkpoint.",
     ""},
    {"T1", "",
     "Before each attempt, compare the target's last record with the stored length and digest, then cut "
     "the target back to the stored length.",
     "Whatever the target holds beyond that length will be replayed. The length alone does not prove "
     "that it is the same file.",
     ""},
    {"T2", "",
     "Sync the target, including its directory entry, before you store the position that counts its "
     "records.",
     "Check that the target is exactly as long as the length you store. Otherwise a power failure leaves "
     "a target that lacks records which exist nowhere else, or bytes that another program wrote in the "
     "meantime push records past the stored length.",
     ""},
    {"G1", "exactly once",
     "When a load is done, every message that was on the queue is in the target exactly once, in the "
     "order of the queue, byte for byte.",
     "", "Nothing. The limits L1 to L13 say where it ends."},
    {"G2", "never nowhere",
     "At every instant, each message is on the queue, or complete in the checkpoint file, or durable in "
     "the target and counted by the stored position.",
     "", "Nothing. `mqam checkpoint show FILE` lists the records that the checkpoint file contains."},
    {"G3", "the same command",
     "Whenever the command, its worker or the queue manager dies, and whichever MQ call or file call "
     "fails, running the same command again resumes the load.",
     "No manual step is needed.", "Run the same command again, or give `--retry-for SECONDS`."},
    {"G4", "no guessing",
     "Files that do not fit together, or that are detectably damaged, are refused before anything is "
     "changed, with a message that says what to do.",
     "", "Read the message; it says which file does not fit and what to do."},
    {"G5", "done means done",
     "Exit code 0 is returned only if two consecutive attempts reached an end of the input with the same "
     "records, both closed without error, the second one waited its whole `RWAIT`, and every record is "
     "durable in the target.",
     "(If the same command has just waited for the `RWAIT` you gave, the second attempt waits one "
     "second.)",
     "Nothing. Test the exit code in scripts."},
    {"G6", "done once",
     "The same command, run after the load is finished, neither loads again nor touches the target, with "
     "or without `--force`.",
     "",
     "To load more messages into the same target give `--append`. To load again from scratch move the "
     "target away."},
    {"L1", "identical messages",
     "A message that was got but not saved when an attempt died is redelivered with a back-out count.",
     "If it equals the previous record, or the previous record begins with its bytes, it is taken for a "
     "duplicate and dropped. Two identical messages in a row cannot be distinguished from a redelivery. "
     "Give messages a number or a time stamp.",
     "Have the senders put a number or a time stamp into each message. If all messages differ, nothing "
     "has to be done."},
    {"L2", "NUL messages",
     "A message of only NUL bytes is dropped in the same way if it is the first one after a start with "
     "an empty checkpoint file.",
     "", "Have the senders put other data than NUL bytes into each message."},
    {"L3", "order",
     "A message that was backed out must be delivered first again, otherwise it can be duplicated.",
     "The queue must deliver first in, first out (`MSGDLVSQ(FIFO)`), and no sender may commit a put "
     "after a younger put of another sender.",
     "Enter `ALTER QLOCAL(QUEUE) MSGDLVSQ(FIFO)` while the queue is empty. It is not the default."},
    {"L4", "shared queue", "No other program may get messages from the queue between two attempts.",
     "`MQEX` keeps them out only during an attempt.",
     "Let no other program read the queue until the load is done. `DISPLAY QSTATUS(QUEUE) TYPE(HANDLE)` "
     "lists the programs that have it open."},
    {"L5", "power failure", "Without a journal (`--durability process`), records are flushed, not synced.",
     "After a power failure or a crash of the operating system, records that were saved and committed "
     "but not yet loaded may be missing from the checkpoint file. At most the records since the last "
     "checkpoint are affected: a small `--checkpoint-every` keeps them few. With the journal, which is the "
     "default of `mqam`, this limit does not exist.",
     "Leave `--durability` at its default, `power`. Otherwise give a small `--checkpoint-every`, and keep the "
     "checkpoint file on a disk whose cache survives a power failure."},
    {"L6", "slow failures",
     "If MQGET fails without data in two consecutive attempts, the second time after more than `RWAIT`, "
     "and both connections close without error, the load is declared done too early.",
     "(One such attempt is enough after an attempt that an empty message ended.) The elapsed time is the "
     "only sign by which a host can distinguish such a failure from an empty queue. Nothing is lost: the "
     "messages are on the queue, and the same command with `--append` loads them.",
     "If the queue is not empty after a load, run the same command with `--append`: `DISPLAY "
     "QLOCAL(QUEUE) CURDEPTH` shows the depth."},
    {"L7", "empty messages", "An empty message carries no record.",
     "Each one ends an attempt and is removed from the queue. After 20 attempts in a row without a "
     "record, `mqam` gives up with exit code 8.",
     "Run the same command again; each run removes up to 20 empty messages. Stop the sender of empty "
     "messages."},
    {"L8", "losses in MQ",
     "Nothing protects messages that expire, non-persistent messages when the queue manager restarts, or "
     "a queue manager that is restored from a backup.",
     "",
     "Have the senders put persistent messages without an expiry: `DEFINE QLOCAL(QUEUE) DEFPSIST(YES)`. "
     "Do not restore a queue manager while a load is unfinished."},
    {"L9", "poison messages",
     "A message longer than `BKSZ`, or one that cannot be converted, fails every attempt.",
     "Nothing is lost, but the load is stuck until someone moves the message or changes the keyword.",
     "Raise `--max-record`, load without `--convert`, or have the message moved to another queue."},
    {"L10", "one file, several loads",
     "If two loads use the same checkpoint file one after the other, they are told apart only by "
     "sequence number, offset and the last record.",
     "The file does not contain a name.", "Give each load a checkpoint file of its own: `--ckfile FILE`."},
    {"L11", "backups",
     "Restart information, checkpoint file and target that are restored from the same backup are "
     "consistent with each other.",
     "The module cannot see that the queue has moved on since.",
     "Do not restore the files of an unfinished load from a backup. If it was done, compare target and "
     "queue."},
    {"L12", "digest",
     "Whether the previous record is the same one is judged by its length and 64 bits of FNV-1a, which "
     "detects accidents, not tampering.",
     "The checkpoint file has no checksum: a flipped bit inside a record goes unnoticed (except in the "
     "first one), and so does a file that was emptied or cut where a record ends.",
     "Keep the files of a load where no one changes them. `mqam checkpoint verify FILE` says what can be "
     "known of a file."},
    {"L13", "exclusive target",
     "Whatever another program or load adds to a target file while the load is unfinished is cut off by "
     "its next attempt (T1).",
     "If rows are added to a table, the next attempt refuses to start. Give each load its own target "
     "until it is done.",
     "Give each load a target of its own until it is done."},
};

}  // namespace

std::span<const LoadRule> AllLoadRules() {
    return kRules;
}

const LoadRule* FindLoadRule(std::string_view id) {
    const std::string wanted = ToUpper(id);
    const auto* const row = std::ranges::find(kRules, std::string_view(wanted),
                                              [](const LoadRule& rule) { return std::string_view(rule.id); });
    return row == std::end(kRules) ? nullptr : row;
}

}  // namespace mqam
