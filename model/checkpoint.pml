// SPDX-License-Identifier: Apache-2.0

/*
 * A load that is restarted until it is done: the host (a command that makes one attempt after another), the access
 * module, its checkpoint file, the host's target with the position that is stored with it, and the queue manager.
 *
 * There is one process, because there is one thread. Spin does not explore interleavings. It explores every place at
 * which a process can die, a file call or an MQ call can fail, or an operator can stop the load. Each of these takes
 * one from `budget`, so BUDGET is the number of misfortunes in one load. README.md says what is left out and how to
 * read a trail.
 *
 * Every rule of the host is a switch: -DRULE_x=0 takes it away.
 */

#ifndef N
#define N 3                     /* messages, numbered 1..N in the order of the queue */
#endif
#ifndef BUDGET
#define BUDGET 2
#endif

/* These misfortunes can happen. */
#ifndef F_CRASH
#define F_CRASH 1               /* the worker dies, between any two steps */
#endif
#ifndef F_MQ
#define F_MQ 1                  /* an MQ call fails */
#endif
#ifndef F_INHIBIT
#define F_INHIBIT F_MQ          /* MQGET fails without data on a connection that works */
#endif
#ifndef F_IO
#define F_IO 1                  /* a file call of the module fails */
#endif
#ifndef F_RESET
#define F_RESET F_IO            /* a file call that rewrites the checkpoint file fails */
#endif
#ifndef F_READ
#define F_READ F_IO             /* a file call that reads a record in a replay fails */
#endif
#ifndef F_LOG
#define F_LOG F_IO              /* a file call that writes the message log fails */
#endif
#ifndef F_TORN
#define F_TORN 1                /* an interrupted write can leave part of the bytes */
#endif
#ifndef F_BACK
#define F_BACK 1                /* MQBACK can fail after a failed save */
#endif
#ifndef F_STOP
#define F_STOP 1                /* the operator ends the load early, or the command dies between two attempts */
#endif
#ifndef F_TIMEOUT
#define F_TIMEOUT 1             /* TIMEOUT_SECONDS fires */
#endif
#ifndef LATE
#define LATE 1                  /* the queue manager may notice late that an attempt is over */
#endif
#ifndef CLOCK
#define CLOCK 1                 /* the host sees whether a Read took RWAIT; 0: a shorter one may seem as long */
#endif
#ifndef EMPTIES
#define EMPTIES 0               /* messages without data: the sum of 1 << m */
#endif
#ifndef ALIKE
#define ALIKE 0                 /* the record before message 2 begins with the bytes of message 2 */
#endif
#ifndef NULS
#define NULS 0                  /* message 1 is only NUL bytes, like the record buffer after Open */
#endif
#ifndef F_OTHER
#define F_OTHER 0               /* another load takes a message that was backed out, between two attempts of this one */
#endif
#ifndef OVERTAKE
#define OVERTAKE 0              /* message 1 was put first but is committed late: it can come at any time */
#endif
#ifndef ORDER
#define ORDER 1                 /* another order counts as damage; 0: only what is lost or doubled does */
#endif
#ifndef POWER
#define POWER 0                 /* a crash may lose what was flushed but never reached the disk */
#endif

/* The host keeps these rules. */
#ifndef RULE_H1
#define RULE_H1 1               /* GetPos right after Open, before the first Read */
#endif
#ifndef RULE_H2
#define RULE_H2 1               /* data and position durable between GetPos and the next Read */
#endif
#ifndef RULE_H3
#define RULE_H3 1               /* the position is stored even if its sequence number is already stored */
#endif
#ifndef RULE_H4
#define RULE_H4 1               /* GetPos only when a record came since the last one, or nothing is in the file */
#endif
#ifndef RULE_H5
#define RULE_H5 1               /* after SetPos one record, then GetPos; 2: GetPos before the replay ends */
#endif
#ifndef RULE_H6_TDM
#define RULE_H6_TDM 1           /* TDM yes */
#endif
#ifndef RULE_H6_END
#define RULE_H6_END 1           /* an end of input ends the attempt */
#endif
#ifndef RULE_H6_CLOSE
#define RULE_H6_CLOSE 1         /* after an end of input comes Close, whose MQDISC takes the duplicate off the queue */
#endif
#ifndef RULE_H6_LIFE
#define RULE_H6_LIFE 1          /* done only when another attempt found nothing more */
#endif
#ifndef RULE_H6_CLEAN
#define RULE_H6_CLEAN 1         /* done only when the attempt before the last had a Close without error at its end of input */
#endif
#ifndef RULE_H6_WAIT
#define RULE_H6_WAIT 1          /* done only when the last Read of the last attempt took RWAIT */
#endif
#ifndef RULE_H7
#define RULE_H7 1               /* a file without a complete record: no SetPos, no repeat */
#endif
#ifndef RULE_H8
#define RULE_H8 1               /* only the temporary file exists: rename it before Open */
#endif
#ifndef RULE_H8B
#define RULE_H8B 1              /* both files exist: delete the temporary file before Open */
#endif
#ifndef RULE_H9
#define RULE_H9 1               /* a failed Read ends the process */
#endif
#ifndef RULE_H10
#define RULE_H10 1              /* a Read in which only the save failed ends the process, too */
#endif
#ifndef RULE_H11
#define RULE_H11 1              /* after a failed Read the process ends without Close */
#endif
#ifndef RULE_H12
#define RULE_H12 1              /* no Read after pmrcTimeout */
#endif
#ifndef RULE_H13
#define RULE_H13 1              /* one attempt per process */
#endif
#ifndef RULE_H13B
#define RULE_H13B 1             /* PRESERVE_RESTART_INFO YES before the first Close */
#endif
#ifndef RULE_H15
#define RULE_H15 1              /* a record of length 0 is ignored */
#endif
#ifndef RULE_H16
#define RULE_H16 1              /* GetPos only between Open and Close */
#endif
#ifndef RULE_H17
#define RULE_H17 1              /* a failed SetPos ends the process */
#endif
#ifndef RULE_H21
#define RULE_H21 1              /* MQEX: Open waits until the queue manager has ended the previous attempt */
#endif
#ifndef RULE_H22
#define RULE_H22 1              /* a torn tail is cut off before Open */
#endif
#ifndef RULE_H23
#define RULE_H23 1              /* done only after a Close without error */
#endif
#ifndef RULE_H24
#define RULE_H24 1              /* done is stored before the checkpoint file is deleted */
#endif
#ifndef RULE_T1
#define RULE_T1 1               /* the target is cut back to the stored length before an attempt */
#endif
#ifndef RULE_T2
#define RULE_T2 1               /* data durable before the position that counts it */
#endif

/* A host could make these choices differently. */
#ifndef END_GETPOS
#define END_GETPOS 0            /* GetPos calls at an end of input: 0, 1 (left pending), 2 (carried out before Close) */
#endif
#ifndef STOP_GETPOS
#define STOP_GETPOS 1           /* GetPos calls when the operator stops the load: the same values */
#endif
#ifndef SETPOS_HEADER
#define SETPOS_HEADER 0         /* 1: SetPos, then GetPos at once, on a file that is only a header */
#endif

#define FMAX (N + 3)
#define TMAX (N + 3)
#define ATTEMPTS (2 * BUDGET + 7)

#define EMPTY(m) ((EMPTIES >> (m)) & 1)
/* The module compares a message that was backed out before with the record it kept; 0 means that there is none. */
#define LOOKS_LIKE(m, kept) ((m) == (kept) || (ALIKE && (m) == 2 && (kept) == 1) || (NULS && (m) == 1 && (kept) == 0))

#define OK 0
#define EOF 9
#define FAIL 34
#define TIMEOUT 55

/* the states of a message */
#define ON 0                    /* on the queue */
#define GOT 1                   /* in the unit of work of the running attempt */
#define LIMBO 2                 /* in the unit of work of an attempt that is over, not backed out yet */
#define GONE 3
#define PUT 4                   /* put and not committed by the sender: not on the queue yet */

/* the states of a temporary file */
#define NONE 0
#define PART 1
#define FULL 2

/* what follows GetPos */
#define NEXT 1
#define STOP 2
#define END 3

#define ERROR(text) printf(text); assert(false)
#define MISFORTUNE(class) ((class) && budget > 0) -> budget--
#define CRASH(text) if :: MISFORTUNE(F_CRASH); printf(text); goto died :: true fi

byte budget = BUDGET;
byte attempts;

/* This is the state of the queue manager. */
byte queue[N + 1];              /* ON, GOT, LIMBO, GONE */
bit backoutCount[N + 1];        /* whether it is above 0 */
bit theirs[N + 1];              /* another load took it */
bit connected;

/* This is the checkpoint file as the system calls left it, with the temporary files of even and odd attempts. */
bit fileThere;
bit headerThere;
byte header;
byte record[FMAX];              /* 0: a record of length 0 */
byte records;
byte torn;                      /* bytes after the last complete record: 1: fewer than 8; 2: a length and part of its record */
bit garbled;                    /* records were written after a torn one, or without a header */
bit rewriteBuffered;            /* header and first record are still in the stream's buffer */
bit appendBuffered;             /* the last record is still in the stream's buffer */
byte temp[2];
byte tempHeader[2];
byte tempRecord[2 * FMAX];
byte tempRecords[2];

/* The module's variables are lost with the process. An offset is the number of a record, from 1; 0 is the start
   of the file. The bits whose names end in Valid are not in the module: they record whether an offset was
   measured in the file as it is now. */
byte CkPtSeq;
byte CkPtOffset;
bit offsetValid;
bit CkPtPending;
bit CkPtTaken;
bit ReplayFromCkPt;
bit FreshCkPtFile;
byte kept;                      /* CkPtRecBuf: a message, or 0 */
bit syncpoint;
bit timedOut;
byte stream;                    /* the number of the record that is read next; 0: no stream */
bit inside;                     /* the stream is in the middle of a record */
bit streamError;                /* a write failed: nothing more is written while the stream is open */
byte rc;
byte rec;                       /* the record returned; 0: of length 0 */

/* The host keeps its target, and its restart file (or a row in the same transaction). */
byte target[TMAX];
byte written;                   /* records written, in this process's buffers or beyond */
byte synced;                    /* records that are synced */
byte stored;                    /* records that the stored position counts */
bit positionThere;
byte posSeq;
byte posOffset;
bit posOffsetValid;
bit posRepeat;                  /* a record was returned before GetPos: the file begins with it */

/* The host's variables are lost with the attempt. */
byte givenSeq;                  /* what the last GetPos returned */
byte givenOffset;
bit givenOffsetValid;
bit givenRepeat;
byte givenCount;
bit givenUnsaved;
bit returned;                   /* Read returned a record in this attempt */
bit since;                      /* Read returned a record since the last GetPos */
bit fromQueue;                  /* a record came from the queue in this attempt */
bit slow;                       /* the last Read took RWAIT */
bit saveFailed;
bit setPos;
bit first;                      /* the next record is the first after SetPos */
bit due;                        /* GetPos is due because of SetPos */
byte then;                      /* what follows GetPos */
bit finished;
bit readOn;

/* The command's variables are kept from attempt to attempt. */
bit beforeClean;                /* the previous attempt reached an end of input and was closed without error */
byte beforeCount;               /* records in the target at its end */

byte i, j, m;                   /* scratch: 0 between uses */

inline ForgetOffsets() {
    offsetValid = 0; givenOffsetValid = 0; posOffsetValid = 0
}

inline ClearFile() {
    headerThere = 0; header = 0; torn = 0; garbled = 0;
    i = 0; do :: i < FMAX -> record[i] = 0; i++ :: else -> break od; i = 0;
    records = 0
}

inline ClearTemp(slot) {
    temp[slot] = NONE; tempHeader[slot] = 0; tempRecords[slot] = 0;
    i = 0; do :: i < FMAX -> tempRecord[(slot) * FMAX + i] = 0; i++ :: else -> break od; i = 0
}

inline RenameTemp(slot) {
    fileThere = 1; headerThere = 1; torn = 0; garbled = 0;
    header = tempHeader[slot]; records = tempRecords[slot];
    i = 0; do :: i < FMAX -> record[i] = tempRecord[(slot) * FMAX + i]; i++ :: else -> break od; i = 0;
    ClearTemp(slot);
    ForgetOffsets()
}

/* ---- queue manager ---- */

inline EndUnit(from, to) {
    m = 1;
    do
    :: m <= N ->
       if
       :: queue[m] == from -> queue[m] = to; if :: to == ON -> backoutCount[m] = 1 :: else fi
       :: else
       fi;
       m++
    :: else -> break
    od;
    m = 0
}

inline BackOut() { d_step { EndUnit(GOT, ON) } }
inline Commit() { d_step { EndUnit(GOT, GONE) } }

inline Find(state) {
    d_step { m = 1; do :: m <= N && queue[m] != state -> m++ :: else -> break od }
}

/* The connection is gone. The queue manager backs out, immediately or later. */
inline LoseConnection() {
    connected = 0;
    Find(GOT);
    if
    :: m > N
    :: m <= N -> BackOut()
    :: m <= N && LATE -> printf("      the queue manager does not notice yet: message %d stays in the unit of work\n", m);
       d_step { EndUnit(GOT, LIMBO) }
    fi;
    m = 0
}

/* The queue manager and the senders can do this at any time. */
inline MeanwhileInMq() {
    Find(LIMBO);
    if
    :: m <= N -> d_step { printf("    the queue manager backs message %d out\n", m); EndUnit(LIMBO, ON) }
    :: true -> m = 0
    fi;
    if :: OVERTAKE && queue[1] == PUT -> queue[1] = ON; printf("    message 1 is committed by its sender\n") :: true fi
}

inline FirstOnQueue() {
    Find(ON);
    d_step {
        if :: m > N && queue[1] == PUT -> queue[1] = ON; m = 1 :: else fi
    }
}

/* ---- module ---- */

/* Puts the file into a state in which a crash or a failure leaves it after a rewrite that was not flushed. */
inline TearRewrite() {
    rewriteBuffered = 0;
    if
    :: d_step { ClearFile(); printf("      left: a checkpoint file of 0 bytes\n") }
    :: d_step { records = 0; record[0] = 0; printf("      left: a checkpoint file of 4 bytes\n") }
    :: F_TORN && records > 0 -> d_step { records = 0; record[0] = 0; torn = 1;
       printf("      left: a header and 1 to 7 bytes of the first record\n") }
    :: F_TORN && records > 0 -> d_step { records = 0; record[0] = 0; torn = 2;
       printf("      left: a header and a first record cut short\n") }
    fi
}

inline TearAppend() {
    appendBuffered = 0;
    records--; record[records] = 0;
    if
    :: printf("      left: nothing of the record\n")
    :: F_TORN -> torn = 1; printf("      left: 1 to 7 bytes of the record\n")
    :: F_TORN -> torn = 2; printf("      left: the record cut short\n")
    fi
}

inline RewriteInPlace() {
    if
    :: d_step {
           ClearFile();
           ForgetOffsets();
           headerThere = 1; header = CkPtSeq; stream = 1; streamError = 0;
           if :: kept != 0 -> record[0] = kept; records = 1; stream = 2 :: else fi;
           rewriteBuffered = 1
       }
       printf("    checkpoint %d: file truncated, header and last record written\n", CkPtSeq)
    :: MISFORTUNE(F_RESET);
       d_step {
           ClearFile(); ForgetOffsets(); headerThere = 1; header = CkPtSeq; stream = 1; streamError = 1;
           if :: kept != 0 -> record[0] = kept; records = 1 :: else fi;
           printf("    fault: the rewrite for checkpoint %d fails\n", CkPtSeq);
       }
       TearRewrite();
       rc = FAIL
    fi
}

inline RewriteInReplay() {
    temp[attempts % 2] = PART;
    CRASH("    dies while the temporary file is written\n");
    if
    :: MISFORTUNE(F_IO);
       printf("    fault: writing the temporary file fails\n");
       stream = records + 1;
       rc = FAIL
    :: torn == 2 -> ERROR("ERROR: stuck: the rewrite meets a record cut short\n")
    :: torn != 2 ->
       d_step {
           temp[attempts % 2] = FULL;
           tempHeader[attempts % 2] = CkPtSeq;
           tempRecord[(attempts % 2) * FMAX] = kept;
           i = stream; j = 1;
           do
           :: i <= records && j < FMAX -> tempRecord[(attempts % 2) * FMAX + j] = record[i - 1]; i++; j++
           :: else -> break
           od;
           tempRecords[attempts % 2] = j;
           i = 0; j = 0
       }
       CRASH("    dies with the temporary file complete and the checkpoint file still there\n");
       d_step { ClearFile(); fileThere = 0; stream = 0 }
       CRASH("    dies between delete and rename\n");
       if
       :: MISFORTUNE(F_IO); printf("    fault: the rename fails\n"); rc = FAIL
       :: true -> d_step { RenameTemp(attempts % 2); stream = 2; streamError = 0 }
          printf("    checkpoint %d: file replaced, %d records after the last one kept\n", CkPtSeq, records - 1);
          CRASH("    dies after the rename\n")
       fi
    fi
}

inline DoGetPos() {
    if
    :: stream == 0 -> rc = FAIL
    :: stream != 0 && !ReplayFromCkPt -> RewriteInPlace()
    :: stream != 0 && ReplayFromCkPt -> RewriteInReplay()
    fi;
    d_step { CkPtPending = 0; CkPtTaken = 1; syncpoint = 1 }
    if :: rc == OK && rewriteBuffered -> CRASH("    dies after the rewrite\n") :: else fi
}

inline ReadFromChkPt() {
    if
    :: inside -> ERROR("ERROR: garbled: the replay continues in the middle of a record\n")
    :: !inside && stream == 0 -> rc = FAIL
    :: !inside && stream > records ->
       d_step { CkPtOffset = stream; offsetValid = 1 }
       if
       :: torn == 2 -> ERROR("ERROR: stuck: the replay meets a record cut short\n")
       :: else -> ReplayFromCkPt = 0
       fi
    :: !inside && stream != 0 && stream <= records ->
       d_step { CkPtOffset = stream; offsetValid = 1; rec = record[stream - 1]; stream++ }
       if
       :: MISFORTUNE(F_READ); printf("    fault: reading the checkpoint file fails in the middle of a record\n");
          inside = 1; rc = FAIL
       :: true
       fi
    fi
}

inline FailSave() {
    saveFailed = 1;
    if :: BackOut() :: F_BACK -> printf("    fault: so does MQBACK\n") fi;
    rc = FAIL
}

inline SaveAndCommit() {
    kept = m;
    if
    :: MISFORTUNE(F_IO); printf("    fault: the offset of the record to be saved cannot be determined\n"); FailSave()
    :: true -> WriteAndCommit()
    fi
}

inline WriteRecordAndCommit() {
    d_step {
        CkPtOffset = records + 1; offsetValid = 1;
        if :: torn != 0 || !headerThere -> garbled = 1 :: else fi
    }
    if :: records == FMAX -> ERROR("ERROR: doubled: the checkpoint file holds more than was sent\n") :: else fi;
    d_step { record[records] = m; records++; stream = records + 1; appendBuffered = 1 }
    CRASH("    dies while the record is saved\n");
    if
    :: MISFORTUNE(F_IO);
       printf("    fault: saving the record fails\n");
       rewriteBuffered = 0; streamError = 1;
       TearAppend();
       FailSave()
    :: true ->
       d_step { rewriteBuffered = 0; appendBuffered = 0 }
       CRASH("    dies before MQCMIT\n");
       if
       :: Commit(); CRASH("    dies after MQCMIT\n")
       :: MISFORTUNE(F_MQ); printf("    fault: MQCMIT fails, and was done\n"); Commit(); connected = 0; rc = FAIL
       :: MISFORTUNE(F_MQ); printf("    fault: MQCMIT fails, not done\n"); LoseConnection(); rc = FAIL
       :: MISFORTUNE(F_MQ); printf("    fault: MQCMIT fails, unit of work still open\n"); rc = FAIL
       :: MISFORTUNE(F_LOG); Commit(); printf("    fault: writing the message log fails\n"); rc = FAIL
       fi
    fi
}

inline WriteAndCommit() {
    if
    :: streamError -> printf("    saving the record fails again\n"); FailSave()
    :: !streamError -> WriteRecordAndCommit()
    fi
}

inline ReadFromQueue() {
    slow = 0;
    MeanwhileInMq();
    FirstOnQueue();
    if
    :: !connected -> printf("    MQGET fails without data: connection broken\n"); rc = EOF
    :: connected && !timedOut && m > N -> slow = 1; rc = EOF
    :: connected && !timedOut && MISFORTUNE(F_TIMEOUT); printf("    fault: the time-out fires\n");
       timedOut = 1; rc = TIMEOUT
    :: connected && timedOut -> if :: m <= N -> printf("    MQGET returns message %d\n", m); queue[m] = (syncpoint -> GOT : GONE) :: else fi; rc = TIMEOUT
    :: connected && MISFORTUNE(F_INHIBIT);
       printf("    fault: MQGET fails without data, the connection works\n"); rc = EOF
    :: connected && MISFORTUNE(F_MQ);
       printf("    fault: MQGET fails without data, the connection is broken\n");
       if :: slow = 1; printf("      only after RWAIT has passed\n") :: true fi;
       LoseConnection(); rc = EOF
    :: connected && !timedOut && m <= N && MISFORTUNE(F_MQ);
       printf("    fault: MQGET returns message %d with a warning\n", m);
       queue[m] = (syncpoint -> GOT : GONE); rc = FAIL
    :: connected && !timedOut && m <= N ->
       queue[m] = (syncpoint -> GOT : GONE);
       if
       :: EMPTY(m) -> printf("    message %d is empty\n", m); rc = EOF
       :: !EMPTY(m) ->
          CRASH("    dies after MQGET\n");
          if
          :: backoutCount[m] && LOOKS_LIKE(m, kept) && RULE_H6_TDM ->
             printf("    message %d is taken for a duplicate\n", m); rc = EOF
          :: else ->
             rec = m;
             if :: CkPtTaken -> SaveAndCommit() :: else fi
          fi
       fi
    fi;
    m = 0;
    if :: !CLOCK -> if :: slow = 1 :: true fi :: else fi
}

inline Read() {
    d_step { slow = 0; rc = OK; rec = 0; saveFailed = 0; printf("  Read\n") }
    if :: CkPtPending -> DoGetPos() :: else fi;
    if :: rc == OK && ReplayFromCkPt -> ReadFromChkPt() :: else fi;
    if
    :: rc == OK && !ReplayFromCkPt ->
       ReadFromQueue();
       if :: rc == OK -> fromQueue = 1 :: else fi
    :: else
    fi;
    d_step {
        rewriteBuffered = 0;
        if :: rc == OK -> kept = rec :: else -> rec = 0 fi;
        if
        :: rc == OK -> printf("    -> record %d\n", rec)
        :: rc == EOF && slow -> printf("    -> end of input, after RWAIT\n")
        :: rc == EOF && !slow -> printf("    -> end of input, before RWAIT\n")
        :: rc == TIMEOUT -> printf("    -> time-out\n")
        :: rc == FAIL -> printf("    -> 34\n")
        fi
    }
    if :: givenUnsaved && (rc == OK || rc == EOF) -> StorePosition() :: else fi
}

inline SetPosition() {
    rc = OK; syncpoint = 1;
    printf("  SetPos %d\n", posSeq);
    if
    :: MISFORTUNE(F_IO); printf("    fault: the checkpoint file cannot be read\n"); rc = FAIL
    :: garbled -> ERROR("ERROR: stuck: SetPos: the checkpoint file begins without its header\n")
    :: !headerThere && !garbled -> ERROR("ERROR: stuck: SetPos: empty checkpoint file\n")
    :: headerThere && !garbled ->
       CkPtSeq = header;
       if
       :: posSeq < CkPtSeq -> ERROR("ERROR: stuck: SetPos: requested sequence prior to checkpoint file\n")
       :: posSeq == CkPtSeq -> stream = 1
       :: posSeq > CkPtSeq && records > 0 && (posOffset == 0 || !posOffsetValid) ->
          ERROR("ERROR: garbled: SetPos sets the file into the middle of a record or past the end\n")
       :: else ->
          d_step { CkPtOffset = posOffset; offsetValid = posOffsetValid; stream = (records > 0 -> posOffset : 1) }
       fi;
       d_step { CkPtPending = 0; ReplayFromCkPt = 1 }
    fi;
    d_step {
        if
        :: rc == OK -> printf("    -> 0 (header %d, replay from record %d of %d)\n", header, stream, records)
        :: else -> printf("    -> 34\n")
        fi
    }
}

inline Open() {
    if
    :: MISFORTUNE(F_MQ);
       printf("  Init, PRESERVE_RESTART_INFO YES, Open -> 34: the queue manager cannot be reached\n");
       if
       :: RULE_H13 -> goto ended
       :: else -> FreshCkPtFile = 1; setPos = 0; printf("  Close -> 0\n")
       fi
    :: true
    fi;
    d_step {
        connected = 1;
        if :: RULE_H21 -> EndUnit(LIMBO, ON) :: else fi;
        if
        :: FreshCkPtFile -> printf("  Open -> 0\n")
        :: else -> if :: RULE_H13B -> printf("  Init, PRESERVE_RESTART_INFO YES, Open -> 0\n") :: else -> printf("  Init, Open -> 0\n") fi
        fi;
        if :: FreshCkPtFile || !fileThere -> ClearFile(); ForgetOffsets(); fileThere = 1 :: else fi;
        stream = 1; inside = 0; streamError = 0; kept = 0; ReplayFromCkPt = 0; CkPtSeq = 0; syncpoint = 0
    }
}

/* Mode 1 stops at the first MQ call that fails; then nothing is committed and the file stays as it is. */
inline Close() {
    if
    :: !connected -> rc = FAIL
    :: connected && MISFORTUNE(F_MQ); printf("    fault: MQCLOSE or MQDISC fails\n"); LoseConnection(); rc = FAIL
    :: connected ->
       Commit();
       d_step {
           connected = 0; stream = 0; FreshCkPtFile = 1; rc = OK;
           if :: !RULE_H13B -> ClearFile(); fileThere = 0 :: else fi
       }
       CRASH("    dies after MQDISC\n")
    fi;
    if :: rc == OK -> printf("  Close -> 0\n") :: else -> printf("  Close -> 34\n") fi
}

/* ---- host ---- */

#if OVERTAKE || F_OTHER || !ORDER
/* Checks that nothing is there twice. The order is not known beforehand, or does not matter. */
inline Judge() {
    d_step {
        i = stored;
        do
        :: i < written ->
           j = 0;
           do :: j < i && target[j] != target[i] -> j++ :: else -> break od;
           if :: j < i || theirs[target[i]] -> printf("ERROR: doubled: message %d\n", target[i]); assert(false) :: else fi;
           i++
        :: else -> break
        od;
        i = 0; j = 0
    }
}
#else
inline Judge() {
    d_step {
        i = stored;
        do
        :: i < written ->
           m = (i == 0 -> 0 : target[i - 1]) + 1;
           do :: m <= N && EMPTY(m) -> m++ :: else -> break od;
           if
           :: target[i] < m -> printf("ERROR: doubled: message %d\n", target[i]); assert(false)
           :: target[i] > m -> printf("ERROR: lost: message %d\n", m); assert(false)
           :: else
           fi;
           i++
        :: else -> break
        od;
        i = 0; m = 0
    }
}
#endif

inline Put(message) {
    if :: written == TMAX -> ERROR("ERROR: doubled: the target holds more than was sent\n") :: else fi;
    d_step { target[written] = message; written++ }
}

inline StorePosition() {
    givenUnsaved = 0;
    if
    :: !RULE_H3 && positionThere && givenSeq == posSeq -> printf("  not stored: sequence %d is stored already\n", posSeq)
    :: else ->
       Judge();
       CRASH("    dies before the target is durable\n");
       if
       :: RULE_T2 -> synced = written; CRASH("    dies with the target durable and the position not stored\n")
       :: else
       fi;
       d_step {
           positionThere = 1; posSeq = givenSeq; posOffset = givenOffset; posOffsetValid = givenOffsetValid;
           posRepeat = givenRepeat; stored = givenCount;
           printf("  stored: position %d, %d records\n", posSeq, stored)
       }
       CRASH("    dies with the position stored\n");
       if :: !RULE_T2 -> synced = written :: else fi
    fi
}

inline GetPos() {
    if
    :: CkPtPending -> rc = OK; printf("  GetPos again\n"); DoGetPos(); rewriteBuffered = 0
    :: else ->
       d_step {
           rc = OK; CkPtSeq++; CkPtPending = 1; since = 0;
           givenSeq = CkPtSeq; givenOffset = CkPtOffset; givenOffsetValid = offsetValid;
           givenRepeat = returned; givenCount = written;
           printf("  GetPos -> %d\n", CkPtSeq)
       }
       if :: RULE_H2 -> StorePosition() :: else -> givenUnsaved = 1 fi
    fi
}

inline StartLife() {
    attempts++;
    if :: attempts > ATTEMPTS -> ERROR("ERROR: stuck: one attempt after another, and none is the last\n") :: else fi;
    d_step {
        printf("attempt %d: %d records stored", attempts, stored);
        if :: positionThere -> printf(" with position %d", posSeq) :: else fi;
        if
        :: !fileThere -> printf("; no checkpoint file\n")
        :: fileThere && garbled -> printf("; checkpoint file without a header\n")
        :: fileThere && !garbled && !headerThere -> printf("; checkpoint file of 0 bytes\n")
        :: fileThere && !garbled && headerThere -> printf("; checkpoint file: header %d, %d records\n", header, records)
        fi;
        CkPtSeq = 0; CkPtOffset = 0; offsetValid = 0; CkPtPending = 0; CkPtTaken = 0; ReplayFromCkPt = 0;
        FreshCkPtFile = 0; kept = 0; syncpoint = 0; timedOut = 0; stream = 0; inside = 0; streamError = 0; rc = OK; rec = 0; connected = 0;
        givenSeq = 0; givenOffset = 0; givenOffsetValid = 0; givenRepeat = 0; givenCount = 0; givenUnsaved = 0;
        returned = 0; since = 0; fromQueue = 0; slow = 0; saveFailed = 0; setPos = 0; first = 0; due = 0; then = 0; finished = 0; readOn = 0;
        rewriteBuffered = 0; appendBuffered = 0
    }
    if
    :: MISFORTUNE(F_OTHER); EndUnit(LIMBO, ON);
       m = 1; do :: m <= N && !(queue[m] == ON && backoutCount[m]) -> m++ :: else -> break od;
       if :: m <= N -> queue[m] = GONE; theirs[m] = 1; printf("  fault: another load takes message %d\n", m) :: else fi;
       m = 0
    :: true
    fi;
    if :: synced < stored -> ERROR("ERROR: lost: the target is shorter than its stored length\n") :: else fi;
    d_step {
        if :: RULE_T1 -> written = stored :: else -> written = synced fi;
        synced = written;
        i = written;
        do :: i < TMAX -> target[i] = 0; i++ :: else -> break od;
        i = 0
    }
}

/* Does what the host does with the files before Open. */
inline LookAtFiles() {
    if
    :: positionThere && !fileThere && RULE_H8 ->
       if
       :: temp[0] != NONE -> i = 0
       :: temp[1] != NONE -> i = 1
       :: temp[0] == NONE && temp[1] == NONE ->
          ERROR("ERROR: stuck: a position is stored, and no checkpoint file is there\n")
       fi;
       if :: (i == 0 -> temp[0] : temp[1]) == PART ->
             ERROR("ERROR: lost: an incomplete temporary file is taken for the checkpoint file\n")
          :: else
       fi;
       if :: i == 0 -> d_step { RenameTemp(0) } :: else -> d_step { RenameTemp(1) } fi;
       i = 0;
       printf("  the temporary file is renamed into place\n")
    :: else
    fi;
    if
    :: fileThere && RULE_H8B && (temp[0] != NONE || temp[1] != NONE) ->
       d_step { ClearTemp(0); ClearTemp(1) }
       printf("  the temporary file is deleted\n")
    :: else
    fi;
    if :: RULE_H22 && torn != 0 -> torn = 0; printf("  the torn tail of the checkpoint file is cut off\n") :: else fi;
    setPos = positionThere && (!RULE_H7 || records > 0 || (SETPOS_HEADER && headerThere))
}

/* Reads the records of the attempt, one by one. */
inline TakeRecord() {
    if
    :: rec == 0 && RULE_H15 -> printf("  (a record of length 0, ignored)\n")
    :: rec == 0 && !RULE_H15 -> ERROR("ERROR: doubled: a record of length 0 that no one sent\n")
    :: rec != 0 ->
       if
       :: first && posRepeat ->
          if
          :: rec == target[written - 1] -> printf("  (%d: the repeat)\n", rec)
          :: rec > target[written - 1] -> ERROR("ERROR: lost: the repeat was expected, and is another record\n")
          :: else -> ERROR("ERROR: stuck: the repeat was expected, and is an earlier record\n")
          fi
       :: else -> Put(rec)
       fi;
       returned = 1
    fi;
    first = 0;
    since = 1;
    rec = 0
}

inline FinishLoad() {
    Judge();
    synced = written; stored = written;
    printf("done: %d records\n", written);
    d_step {
        i = 0; m = 1;
        do :: m <= N -> i = i + ((EMPTY(m) || theirs[m]) -> 0 : 1); m++ :: else -> break od;
        if :: written < i -> printf("ERROR: unfinished: %d of %d records\n", written, i); assert(false) :: else fi;
        m = 1;
        do
        :: m <= N -> if :: queue[m] != GONE -> printf("ERROR: unfinished: message %d is still queued\n", m); assert(false)
                        :: else
                     fi; m++
        :: else -> break
        od;
        i = 0; m = 0
    }
    goto done
}

active proctype Load()
{
atomic {
    queue[1] = (OVERTAKE -> PUT : ON);
attempt:
    StartLife();
    LookAtFiles();
    if :: !RULE_H16 && !setPos -> d_step { CkPtSeq++; CkPtPending = 1; givenSeq = CkPtSeq; printf("  GetPos -> 1\n") }
       :: else
    fi;
    Open();
    if
    :: setPos ->
       SetPosition();
       if
       :: rc == OK -> first = (records > 0 || !SETPOS_HEADER)
       :: rc == FAIL && RULE_H17 && !RULE_H11 -> goto failed
       :: rc == FAIL && RULE_H17 && RULE_H11 -> printf("  the process ends without Close\n"); goto died
       :: rc == FAIL && !RULE_H17 -> setPos = 0
       fi
    :: else
    fi;
    if
    :: CkPtPending -> givenCount = written; StorePosition()
    :: !CkPtPending && setPos && first ->
       due = (RULE_H5 != 0);
       if :: !RULE_H4 -> then = NEXT; goto getpos :: true fi
    :: !CkPtPending && setPos && !first -> if :: RULE_H5 -> then = NEXT; goto getpos :: else fi
    :: !CkPtPending && !setPos -> if :: RULE_H1 -> then = NEXT; goto getpos :: else fi
    fi;

next:
    if
    :: !first && MISFORTUNE(F_STOP);
       printf("  fault: the operator stops the load\n");
       then = STOP;
       if :: since -> goto getpos :: else -> goto stop fi
    :: true
    fi;
    Read();
    if
    :: rc == OK ->
       TakeRecord();
       if
       :: due && (RULE_H5 == 1 || !ReplayFromCkPt || stream > records) -> then = NEXT; goto getpos
       :: due && RULE_H5 == 2 && ReplayFromCkPt && stream <= records ->
          if :: then = NEXT; goto getpos :: true fi
       :: !due && since -> if :: then = NEXT; goto getpos :: true fi
       :: else
       fi;
       goto next
    :: rc == EOF -> goto end_of_input
    :: rc == TIMEOUT -> if :: !RULE_H12 && readOn == 0 -> readOn = 1; goto next :: else -> goto stop fi
    :: rc == FAIL -> goto failed
    fi;

getpos:
    due = 0;
    GetPos();
    if
    :: rc == FAIL -> goto failed
    :: rc == OK && then == NEXT -> then = 0; goto next
    :: rc == OK && then == STOP -> if :: STOP_GETPOS == 2 && CkPtPending -> goto getpos :: else -> goto stop fi
    :: rc == OK && then == END -> if :: END_GETPOS == 2 && CkPtPending -> goto getpos :: else -> goto end fi
    fi;

end_of_input:
    if :: !RULE_H6_END && !slow && connected -> goto next :: else fi;
    then = END;
    if :: (END_GETPOS && since) || (!RULE_H4 && !since) -> goto getpos :: else fi;
end:
    finished = (slow || !RULE_H6_WAIT) &&
               (!RULE_H6_LIFE || (RULE_H6_CLEAN && beforeClean && beforeCount == written) ||
                (!RULE_H6_CLEAN && !fromQueue));
    if
    :: finished && !RULE_H23 -> FinishLoad()
    :: !finished && !RULE_H6_CLOSE -> printf("  the process ends without Close\n"); goto died
    :: else
    fi;
stop:
    Close();
    if :: rc == FAIL -> goto failed :: else fi;
    if
    :: finished ->
       if :: !RULE_H24 -> d_step { ClearFile(); fileThere = 0 } :: else fi;
       CRASH("    dies before done is stored\n");
       FinishLoad()
    :: !finished && then == END ->
       beforeClean = 1; beforeCount = written;
       if :: MISFORTUNE(F_STOP); printf("  fault: the command dies between two attempts\n"); goto ended :: true fi;
       goto attempt
    :: !finished && then != END -> goto ended
    fi;

failed:
    if
    :: connected && !RULE_H11 && stream != 0 -> then = STOP; finished = 0; goto stop
    :: connected && RULE_H11 && ((saveFailed && !RULE_H10) || (!saveFailed && !RULE_H9)) -> goto next
    :: else -> printf("  the process ends without Close\n")
    fi;

died:
    LoseConnection();
    i = 0; j = 0; m = 0;
    if
    :: rewriteBuffered -> if :: TearRewrite(); appendBuffered = 0 :: rewriteBuffered = 0 fi
    :: else
    fi;
    if :: appendBuffered -> if :: TearAppend() :: appendBuffered = 0 fi :: else fi;
    if
    :: POWER && records > 0 -> records--; record[records] = 0; printf("      left: all but the last record\n")
    :: true
    fi;
ended:
    beforeClean = 0; beforeCount = 0;
    goto attempt;

done:
    skip
}
}
