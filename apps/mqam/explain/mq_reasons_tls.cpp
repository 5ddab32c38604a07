// SPDX-License-Identifier: Apache-2.0

// These MQ reasons concern TLS on a client channel. All of them come from MQCONNX.
#include "mqam/explain/mq_reason_tables.h"

namespace mqam {

namespace {

constexpr MqReason kTlsReasons[] = {
    {2380, "MQRC_SCO_ERROR", "C", Recovery::kPermanent, "the TLS options are not valid",
     "The module sends none, so an exit or the channel table supplied them.",
     "Check the channel table (MQCCDTURL) and the exits."},
    {2381, "MQRC_KEY_REPOSITORY_ERROR", "C", Recovery::kPermanent, "the TLS key repository cannot be used",
     "The key repository is not given, is missing or cannot be read by the user of the load, or its "
     "password or stash file is wrong.",
     "Set MQSSLKEYR, or SSLKeyRepository in the SSL stanza of mqclient.ini. Up to MQ 9.2 the name is "
     "given without .kdb. The stash file (.sth) must be next to it and readable: `runmqakm -keydb "
     "-stashpw -db KEY.kdb`."},
    {2382, "MQRC_CRYPTO_HARDWARE_ERROR", "C", Recovery::kPermanent,
     "the setting for cryptographic hardware is not valid",
     "The text in MQSSLCRYP or SSLCRYP is wrong, or the device does not answer.",
     "Correct MQSSLCRYP, or SSLCryptoHardware in mqclient.ini."},
    {2383, "MQRC_AUTH_INFO_REC_COUNT_ERROR", "C", Recovery::kPermanent,
     "the number of authentication records is not valid",
     "The channel settings of the client contain an error.",
     "Check the exits and the channel table (MQCCDTURL)."},
    {2384, "MQRC_AUTH_INFO_REC_ERROR", "C", Recovery::kPermanent, "the authentication records are not valid",
     "The channel settings of the client contain an error.",
     "Check the exits and the channel table (MQCCDTURL)."},
    {2385, "MQRC_AIR_ERROR", "C", Recovery::kPermanent, "an authentication record is not valid",
     "The channel settings of the client contain an error.",
     "Check the exits and the channel table (MQCCDTURL)."},
    {2386, "MQRC_AUTH_INFO_TYPE_ERROR", "C", Recovery::kPermanent,
     "the type of an authentication record is not valid",
     "The channel settings of the client contain an error.",
     "Check the exits and the channel table (MQCCDTURL)."},
    {2387, "MQRC_AUTH_INFO_CONN_NAME_ERROR", "C", Recovery::kPermanent,
     "the address of a revocation server is not valid",
     "The address of the LDAP or OCSP server in the settings is wrong.",
     "Correct CONNAME or OCSPURL of the AUTHINFO object in the channel table."},
    {2388, "MQRC_LDAP_USER_NAME_ERROR", "C", Recovery::kPermanent,
     "the LDAP user name for revocation checks is not valid",
     "The LDAP settings of the revocation check are wrong.", "Correct LDAPUSER of the AUTHINFO object."},
    {2389, "MQRC_LDAP_USER_NAME_LENGTH_ERR", "C", Recovery::kPermanent,
     "the LDAP user name for revocation checks has a wrong length",
     "The LDAP settings of the revocation check are wrong.", "Correct LDAPUSER of the AUTHINFO object."},
    {2390, "MQRC_LDAP_PASSWORD_ERROR", "C", Recovery::kPermanent,
     "the LDAP password for revocation checks is not valid",
     "The LDAP settings of the revocation check are wrong.", "Correct LDAPPWD of the AUTHINFO object."},
    {2392, "MQRC_SSL_CONFIG_ERROR", "C", Recovery::kPermanent, "the TLS settings contradict each other",
     "Cipher, key repository and channel definition do not fit together.",
     "Compare SSLCIPH, SSLCAUTH and SSLPEER on both ends. AMQERR01.LOG of the client names the setting."},
    {2393, "MQRC_SSL_INITIALIZATION_ERROR", "C", Recovery::kPermanent, "TLS could not be initialized",
     "The handshake failed: no cipher is common to both ends, one end does not trust the certificate of "
     "the other, a certificate has expired, or the server demands a certificate of the client.",
     "Read AMQERR01.LOG on both sides: AMQ9631 is a cipher, AMQ9633 a certificate that is not trusted, "
     "AMQ9637 a missing certificate. Compare SSLCIPH on both ends, and list the certificates: `runmqakm "
     "-cert -list -db KEY.kdb -stashed`."},
    {2396, "MQRC_SSL_NOT_ALLOWED", "C", Recovery::kPermanent, "TLS is not allowed on this connection",
     "The channel asks for TLS, but the connection is local.",
     "Connect as a client: give `--channel` and `--server`, or a channel table, and set "
     "MQ_CONNECT_TYPE=CLIENT."},
    {2397, "MQRC_JSSE_ERROR", "C", Recovery::kPermanent, "the Java TLS library returned an error",
     "Only Java clients return this code.", "Read the exception that Java reports with it."},
    {2398, "MQRC_SSL_PEER_NAME_MISMATCH", "C", Recovery::kPermanent,
     "the certificate of the partner does not match SSLPEER",
     "The name in the certificate is not the one that the channel expects.",
     "Correct SSLPEER of the channel, or install the right certificate: `runmqakm -cert -details -label "
     "LABEL -db KEY.kdb -stashed`."},
    {2399, "MQRC_SSL_PEER_NAME_ERROR", "C", Recovery::kPermanent, "the SSLPEER value is not valid",
     "The pattern for the certificate's name contains an error.",
     "Correct SSLPEER of the channel, for example `SSLPEER('CN=QM1,O=Example')`."},
    {2400, "MQRC_UNSUPPORTED_CIPHER_SUITE", "C", Recovery::kPermanent, "the cipher suite is not supported",
     "One end does not have the cipher of the channel. Mostly Java clients return this code.",
     "Choose a cipher that both ends have, for example `SSLCIPH(ANY_TLS12_OR_HIGHER)`."},
    {2401, "MQRC_SSL_CERTIFICATE_REVOKED", "C", Recovery::kPermanent, "a certificate is revoked",
     "The certificate of the partner was revoked by its issuer.",
     "Have a new certificate issued and installed."},
    {2402, "MQRC_SSL_CERT_STORE_ERROR", "C", Recovery::kTransient, "no revocation server could be reached",
     "The LDAP or OCSP server that knows the revoked certificates does not answer.",
     "Check that server and the network to it, then start the load again."},
    {2409, "MQRC_SSL_KEY_RESET_ERROR", "C", Recovery::kPermanent, "the TLS key reset count is not valid",
     "The setting for renewing TLS keys is out of range.",
     "Correct MQSSLRESET, or SSLKeyResetCount in mqclient.ini (0 to 999999999)."},
    {2552, "MQRC_CHANNEL_SSL_WARNING", "C", Recovery::kWarning, "TLS reported a warning",
     "The connection was made. The queue manager writes the warning as an event.",
     "Read AMQERR01.LOG of the queue manager."},
    {2553, "MQRC_OCSP_URL_ERROR", "C", Recovery::kPermanent, "the address of the OCSP server is not valid",
     "The OCSP address in the settings is not a valid URL.", "Correct OCSPURL of the AUTHINFO object."},
    {2570, "MQRC_SSL_ALT_PROVIDER_REQUIRED", "C", Recovery::kPermanent,
     "the TLS settings need another TLS provider",
     "The client's TLS library does not support what the channel asks for.",
     "Install a current MQ client, or choose another SSLCIPH."},
    {2591, "MQRC_CIPHER_SPEC_NOT_SUITE_B", "C", Recovery::kPermanent,
     "the cipher does not comply with Suite B",
     "Suite B is switched on, and the cipher of the channel is not part of it.",
     "Choose another SSLCIPH, or switch Suite B off (`MQSUITEB=NONE`)."},
    {2592, "MQRC_SUITE_B_ERROR", "C", Recovery::kPermanent, "the Suite B setting is not valid",
     "MQSUITEB or EncryptionPolicySuiteB has a wrong value.",
     "Correct MQSUITEB, or EncryptionPolicySuiteB in mqclient.ini."},
    {2593, "MQRC_CERT_VAL_POLICY_ERROR", "C", Recovery::kPermanent,
     "the certificate validation policy is not valid", "The setting has a wrong value.",
     "Correct MQCERTVPOL, or CertificateValPolicy in mqclient.ini (ANY or RFC5280)."},
    {2596, "MQRC_CERT_LABEL_NOT_ALLOWED", "C", Recovery::kPermanent,
     "a certificate label is not allowed here",
     "The other end, or the cipher, does not support a choice of certificates.",
     "Remove the label (CERTLABL, MQCERTLABL), or update the older end."},
    {2603, "MQRC_OUTBOUND_SNI_NOT_VALID", "C", Recovery::kPermanent, "the OutboundSNI setting is not valid",
     "The setting has a wrong value.",
     "Correct OutboundSNI in the SSL stanza of mqclient.ini (CHANNEL or HOSTNAME)."},
    {2604, "MQRC_HTTPS_KEYSTORE_ERROR", "C", Recovery::kPermanent, "the key store for HTTPS cannot be used",
     "The channel table is read over HTTPS, and its key store is missing or wrong.",
     "Correct HTTPSKeyStore in mqclient.ini, or use a channel table on the local disk."},
};

}  // namespace

std::span<const MqReason> TlsReasons() {
    return kTlsReasons;
}

}  // namespace mqam
