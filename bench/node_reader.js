// SPDX-License-Identifier: Apache-2.0

// Reads a queue with IBM's Node.js binding as a careful program would: each message is got under syncpoint, appended to a
// file and committed. Prints the number of messages and the seconds that they took.
//   node node_reader.js QMGR QUEUE FILE
"use strict";

const fs = require("node:fs");
const mq = require("ibmmq");

const MQC = mq.MQC;
const [qmgr, queueName, path] = process.argv.slice(2);

// The synchronous calls of the binding pass their result to a callback.
function call(verb, ...parameters) {
  let outcome;
  verb(...parameters, (error, result) => {
    if (error) throw error;
    outcome = result;
  });
  return outcome;
}

const connection = call(mq.ConnxSync, qmgr, new mq.MQCNO());
const od = new mq.MQOD();
od.ObjectName = queueName;
const queue = call(mq.OpenSync, connection, od, MQC.MQOO_INPUT_EXCLUSIVE);
const file = fs.openSync(path, "w");
const buffer = Buffer.alloc(65536);
const start = process.hrtime.bigint();
let messages = 0;
for (;;) {
  const gmo = new mq.MQGMO();
  gmo.Options = MQC.MQGMO_SYNCPOINT | MQC.MQGMO_NO_WAIT;
  let length;
  try {
    length = call(mq.GetSync, queue, new mq.MQMD(), gmo, buffer);
  } catch (error) {
    if (error.mqrc === MQC.MQRC_NO_MSG_AVAILABLE) break;
    throw error;
  }
  fs.writeSync(file, buffer, 0, length);
  fs.writeSync(file, "\n");
  call(mq.CmitSync, connection);
  messages += 1;
}
const seconds = Number(process.hrtime.bigint() - start) / 1e9;
fs.closeSync(file);
call(mq.CloseSync, queue, 0);
call(mq.DiscSync, connection);
console.log(`${messages} ${seconds.toFixed(3)}`);
