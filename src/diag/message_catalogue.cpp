#include "diag/message_catalogue.h"

namespace {

struct MessageRow {
    int code;
    const char* format;
};

// The wording is part of the interface and stays as it is. 104, 105, 111, 113, 122, 131, 134, 136, 138, 139,
// 140, 149 and 155 have no caller; they keep their codes from being given to other messages. The table ends
// with code 0.
constexpr MessageRow kCatalogue[] = {
    {19080, "MQA%04d: <%s, Version %s>"},
    {100, "MQA%04d: <Error: unidentified keyword: '%s'>"},
    {101, "MQA%04d: <Trace Level (%s) value: %d must be between 0 and 4>"},
    {102, "MQA%04d: <Trace Level (%s) value missing second parmameter (%s)>"},
    {103, "MQA%04d: <Trace Level (%s) %s %s length: %d > Max (%d)>"},
    {104, "MQA%04d: <Crash location (%s) value: %d must be > 0>"},
    {105, "MQA%04d: <Crash (%s) 'countdown' (2nd parm) value missing>"},
    {106, "MQA%04d: <Blocksize (%s) value: %d < min (1) or > max %d>"},
    {107, "MQA%04d: <Read wait interval (%s) value: %d out of range (-1 or 1<seconds<600)>"},
    {108, "MQA%04d: <MQ Open tenacity (%s) value: %d out of range (1<seconds<6000)>"},
    {109, "MQA%04d: <Open wait interval  (%s) value: %d out of range (1<seconds<600)>"},
    {110, "MQA%04d: <Log (%s) %s %s length: %d > Max (%d)>"},
    {111, "MQA%04d: <Alternate Log (%s) %s %s length: %d > Max (%d)>"},
    {112, "MQA%04d: <Invalid Terminate on Log failure (%s) parameter '%s'>"},
    {113, "MQA%04d: <Invalid Fill Log blocks (%s) parameter '%s'>"},
    {114, "MQA%04d: <Invalid Terminate on duplicate message (%s) parameter '%s'>"},
    {115, "MQA%04d: <Invalid Convert text (%s) parameter '%s'>"},
    {116, "MQA%04d: <Invalid media flush (%s) parameter '%s'>"},
    {117, "MQA%04d: <Checkpoint (%s) %s %s length: %d > Max (%d)>"},
    {118, "MQA%04d: <Queue Manager (%s) %s length: %d > Max (%d)>"},
    {119, "MQA%04d: <Queue Name (%s) %s length: %d > Max (%d)>"},
    {120, "MQA%04d: <Server Name (%s) %s length: %d > Max (%d)>"},
    {121, "MQA%04d: <Channel Name (%s) %s length: %d > Max (%d)>"},
    {122, "MQA%04d: <Invalid Allow signals (%s) parameter '%s'>"},
    {123, "MQA%04d: <Disk space error, while writing to checkpoint.>"},
    {124, "MQA%04d: <Parameter file open failed. Reason '%s'>"},
    {125, "MQA%04d: <Error occurred while reading the MQ Parameter file>"},
    {126, "MQA%04d: <Parameter %s %s length: %d > Max (%d)>"},
    {127, "MQA%04d: <Queue Manager Name must be specified. Keyword: %s <name>>"},
    {128, "MQA%04d: <Queue Name must be specified. Keyword: %s <name>>"},
    {129, "MQA%04d: <Both fatal log errors (%s) and MQ (%s) based checkpointing requested.>"},
    {130, "MQA%04d: <Both file (%s) and MQ (%s) based checkpointing requested.>"},
    {131, "MQA%04d: <Keyword '%s' can not be used without keyword '%s'>"},
    {132, "MQA%04d: <Trace file open failed ('%s'). Reason '%s'>"},
    {133,
     "MQA%04d: <Specify both channel name (keyword:%s) and server name (keyword:%s) or neither to default to "
     "MQSERVER env var.>"},
    {134,
     "MQA%04d: <Channel Name (keyword:%s) was not specified.\nChannel Name used will be that found in "
     "environment variable.>"},
    {135, "MQA%04d: <Length of temporary checkpoint file (%d) exceeds maximum of %d>"},
    {136, "MQA%04d: <Temporary checkpoint file: '%s'>"},
    {137, "MQA%04d: <Checkpoint file (%s) open failed. Reason '%s'>"},
    {138, "MQA%04d: <Checkpoint file ('%s') open successful>"},
    {139, "MQA%04d: <CloseLogFile failed to close current log>"},
    {140, "MQA%04d: <Log Swap request received but no alternate log (via keyword %s ) provided.>"},
    {141, "MQA%04d: <Log file (%s) open failed. Reason '%s'>"},
    {142, "MQA%04d: <MQCLOSE failed.  QName = %s. Reason code = %ld>"},
    {144, "MQA%04d: <MQDISC failed. QMName = %s, reason code = %ld>"},
    {143, "MQA%04d: <MQCMIT failed, reason code = %ld>"},
    {145, "MQA%04d: <MQBACK failed, reason code = %ld>"},
    {146, "MQA%04d: <!ERROR! expected %d bytes, wrote %d>"},
    {147, "MQA%04d: <!ERROR! expected %d bytes, read %d>"},
    {148, "MQA%04d: <Temp checkpoint (%s) open failed. Reason '%s'>"},
    {149, "MQA%04d: <Temp Checkpoint file (%s). Reason '%s'>"},
    {150, "MQA%04d: <Temp Checkpoint file (%s) rename failed. Reason '%s'>"},
    {151, "MQA%04d: <Temp Checkpoint file (%s) delete failed. Reason '%s'>"},
    {152, "MQA%04d: <!ERROR! Invalid record length (%d), read %d>"},
    {153,
     "MQA%04d: <Queue manager (%s) connect failed, reason code = %ld (Queue manager name not valid or not "
     "known)>"},
    {154,
     "MQA%04d: <Queue manager (%s) connect failed, reason code = %ld (Queue manager not available for "
     "connection)>"},
    {155,
     "MQA%04d: <Queue manager (%s) connect failed, reason code = %ld (Keyword '%s' or '%s' contents "
     "invalid.)>"},
    {156, "MQA%04d: <MQOpen, QName = %s, reason code = %ld>"},
    {157, "MQA%04d: <MQOpen attempts exhausted. QName '%s', reason code %ld (Queue already open)>"},
    {158, "MQA%04d: <MQOpen attempts exhausted. QName '%s', reason code %ld (Unknown queue name)>"},
    {159,
     "MQA%04d: <Close/Rewind mode (pmiPIDMOptCloseR) not supported.  Proceeding with normal close "
     "(pmiPIDMOptClose).>"},
    {160, "MQA%04d: <Read failed.  Queue not open.  QMName = %s. QName = %s.>"},
    {161, "MQA%04d: <Message length > blocksize (%d)>"},
    {162, "MQA%04d: <Error occured while Repositioning the checkpoint file.>"},
    {163, "MQA%04d: <Queue already open, Access Module limited to 1 open Queue.>"},
    {164, "MQA%04d: <option %s: argument missing>"},
    {165, "MQA%04d: <Reason code = %ld>"},
    {0, nullptr},
};

}  // namespace

const char* GetMsgFormat(int code) {
    const MessageRow* row = kCatalogue;
    while (row->code != 0 && row->code != code)
        ++row;
    return row->format;
}
