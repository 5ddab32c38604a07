// SPDX-License-Identifier: Apache-2.0

// Uses the stand-in queue manager through a client from outside this project, IBM's Node.js binding. It
// connects, puts, gets with a wait, backs out, commits, inquires and disconnects. The binding loads libmqm_r.so
// from LD_LIBRARY_PATH. SPOOLMQ_DIR must contain the queue manager QM1 with the empty queue Q1.
//
// The messages that this client leaves on the queue are for the module to read. The client writes their bytes
// to the file named by the argument, each after its length (4 bytes, little-endian).
"use strict";

const assert = require("node:assert/strict");
const fs = require("node:fs");
const mq = require("ibmmq");

const MQC = mq.MQC;

// The synchronous calls of the binding pass their result to a callback.
function call(verb, ...parameters) {
  let outcome;
  verb(...parameters, (error, result) => {
    if (error) throw error;
    outcome = result;
  });
  return outcome;
}

function put(queue, body, options) {
  const md = new mq.MQMD();
  const pmo = new mq.MQPMO();
  pmo.Options = options | MQC.MQPMO_NEW_MSG_ID;
  call(mq.PutSync, queue, md, pmo, body);
  return md;
}

function get(queue, options, waitMs) {
  const md = new mq.MQMD();
  const gmo = new mq.MQGMO();
  gmo.Options = options;
  gmo.WaitInterval = waitMs;
  const buffer = Buffer.alloc(200000);
  const length = call(mq.GetSync, queue, md, gmo, buffer);
  return { body: Buffer.from(buffer.subarray(0, length)), md };
}

function depth(queue) {
  const selectors = [new mq.MQAttr(MQC.MQIA_CURRENT_Q_DEPTH), new mq.MQAttr(MQC.MQCA_Q_NAME)];
  call(mq.Inq, queue, selectors);
  assert.equal(selectors[1].value.trim(), "Q1");
  return selectors[0].value;
}

const wait = MQC.MQGMO_WAIT | MQC.MQGMO_FAIL_IF_QUIESCING;
const binary = Buffer.from([0, 10, 13, 255, 0, 1]);

const cno = new mq.MQCNO();
cno.Options = MQC.MQCNO_NONE;
const connection = call(mq.ConnxSync, "QM1", cno);
const od = new mq.MQOD();
od.ObjectName = "Q1";
const queue = call(mq.OpenSync, connection, od, MQC.MQOO_INPUT_SHARED | MQC.MQOO_OUTPUT | MQC.MQOO_INQUIRE);

// On an empty queue, a get returns 2033 after its wait.
assert.throws(() => get(queue, wait | MQC.MQGMO_NO_SYNCPOINT, 50), { mqrc: MQC.MQRC_NO_MSG_AVAILABLE });

// A message that is put outside syncpoint is available immediately, with its identifier and a back-out count
// of 0.
const sent = put(queue, binary, MQC.MQPMO_NO_SYNCPOINT);
assert.equal(depth(queue), 1);

// A message that was got under syncpoint and backed out returns with its back-out count raised.
let got = get(queue, wait | MQC.MQGMO_SYNCPOINT, 1000);
assert.deepEqual(got.body, binary);
assert.deepEqual(got.md.MsgId, sent.MsgId);
assert.equal(got.md.BackoutCount, 0);
call(mq.Back, connection);
got = get(queue, wait | MQC.MQGMO_SYNCPOINT, 1000);
assert.deepEqual(got.body, binary);
assert.equal(got.md.BackoutCount, 1);

// After a commit the message is gone.
call(mq.Cmit, connection);
assert.equal(depth(queue), 0);
assert.throws(() => get(queue, wait | MQC.MQGMO_NO_SYNCPOINT, 0), { mqrc: MQC.MQRC_NO_MSG_AVAILABLE });

// Messages that were put under syncpoint become available with the commit, in order.
const left = [binary, Buffer.from("an order\n"), Buffer.alloc(100000, "x"), Buffer.from("ü", "utf8")];
for (const body of left) put(queue, body, MQC.MQPMO_SYNCPOINT);
call(mq.Cmit, connection);
assert.equal(depth(queue), left.length);

call(mq.CloseSync, queue, 0);
call(mq.DiscSync, connection);

const framed = left.flatMap((body) => {
  const length = Buffer.alloc(4);
  length.writeUInt32LE(body.length);
  return [length, body];
});
fs.writeFileSync(process.argv[2], Buffer.concat(framed));
console.log("the client is done; messages left for the module:", left.length);
