/* SPDX-License-Identifier: Apache-2.0 */

/*
 * The journal library, libmqamjournal.so or mqamjournal.dll: checkpoint files that survive a loss of power.
 *
 * The access module flushes its checkpoint file to the operating system and does not sync it. A host that
 * loads the module with MQAMOD_MQ_LIBRARY set to this library has each record on the disk before its message
 * is committed: on MQCMIT, the library first saves what the checkpoint file has gained in a journal,
 * CKFILE.journal, and syncs that. All other calls are passed on to the real MQ library at once. docs/hosts.md
 * says which rules such a host follows.
 *
 * The environment configures it; the variables are read at MQCONNX:
 *   MQAMJOURNAL_CHECKPOINT   the path of the checkpoint file, the same that CKFILE names
 *   MQAMJOURNAL_MQ_LIBRARY   the real MQ library; if it is not set, the one that the module would find itself
 *
 * If the journal cannot be written, MQCMIT is not passed on: it fails with reason 2208
 * (MQRC_FILE_SYSTEM_ERROR). MQCONNX fails with the same reason if MQAMJOURNAL_CHECKPOINT is not set.
 *
 * Call the functions from one thread, while it is not connected to a queue manager. Those that return int
 * return -1 on failure.
 */
#ifndef MQAMJOURNAL_H
#define MQAMJOURNAL_H

#ifdef __cplusplus
extern "C" {
#endif

/* Restores the checkpoint file from its journal. Call it in every attempt, before you inspect the checkpoint
 * file. Returns 1 if the file was restored; 0 if it was not changed, because there is no journal or the file
 * already has the content of the journal. */
int MqamJournalRestore(const char* checkpointPath);

/* Replaces the journal with an empty one, or creates it. Call it when a load begins, before the first position
 * is stored. Returns 0. */
int MqamJournalReset(const char* checkpointPath);

/* Deletes the journal, if there is one. Call it when the load is finished, together with the deletion of the
 * checkpoint file. Returns 0. */
int MqamJournalRemove(const char* checkpointPath);

/* Returns the last error, also of MQCONNX and MQCMIT, as a sentence in UTF-8 that names the file or library; or
 * an empty string if there was no error. The text is valid until the next call of this library. */
const char* MqamJournalError(void);

#ifdef __cplusplus
}
#endif

#endif
