// Digests, message authentication codes and RSA signatures on OpenSSL's libcrypto. Text is used
// as its UTF-8 bytes, a container as its file's bytes; the results are containers of the raw
// bytes, as FileMaker gives them (HexEncode or Base64Encode make them readable).
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/pem.h>

#include <memory>
#include <string>

#include "sim/calc/builtins.h"
#include "sim/core/encoding.h"
#include "sim/core/text.h"

namespace sim::calc {

namespace {

// FileMaker's algorithm names, ignoring case; an empty name is SHA512. nullptr for another one.
const EVP_MD* digestNamed(std::u16string_view name) {
    const std::u16string lower = toLower(name);
    if (lower.empty() || lower == u"sha512") return EVP_sha512();
    if (lower == u"md5") return EVP_md5();
    if (lower == u"sha1") return EVP_sha1();
    if (lower == u"sha224") return EVP_sha224();
    if (lower == u"sha256") return EVP_sha256();
    if (lower == u"sha384") return EVP_sha384();
    return nullptr;
}

Value containerOf(std::string bytes) {
    Binary b;
    b.streams.push_back({{'F', 'I', 'L', 'E'}, std::move(bytes)});
    return Value::binary(std::move(b));
}

const unsigned char* unsignedBytes(const std::string& s) {
    return reinterpret_cast<const unsigned char*>(s.data());
}

// CryptDigest ( data ; algorithm )
Value fnCryptDigest(Args& a) {
    const EVP_MD* md = digestNamed(a.units(1));
    if (md == nullptr) return questionMark();
    const std::string data = bytesOfArgument(a, 0);
    std::string out(EVP_MAX_MD_SIZE, '\0');
    unsigned int size = 0;
    if (EVP_Digest(data.data(), data.size(), reinterpret_cast<unsigned char*>(out.data()), &size,
                   md, nullptr) != 1) {
        return questionMark();
    }
    out.resize(size);
    return containerOf(std::move(out));
}

// CryptAuthCode ( data ; algorithm ; key ): the HMAC of the data.
Value fnCryptAuthCode(Args& a) {
    const EVP_MD* md = digestNamed(a.units(1));
    if (md == nullptr) return questionMark();
    const std::string data = bytesOfArgument(a, 0);
    const std::string key = bytesOfArgument(a, 2);
    std::string out(EVP_MAX_MD_SIZE, '\0');
    unsigned int size = 0;
    if (HMAC(md, key.data(), static_cast<int>(key.size()), unsignedBytes(data), data.size(),
             reinterpret_cast<unsigned char*>(out.data()), &size) == nullptr) {
        return questionMark();
    }
    out.resize(size);
    return containerOf(std::move(out));
}

struct BioFree {
    void operator()(BIO* b) const { BIO_free(b); }
};
struct KeyFree {
    void operator()(EVP_PKEY* k) const { EVP_PKEY_free(k); }
};
struct MdContextFree {
    void operator()(EVP_MD_CTX* c) const { EVP_MD_CTX_free(c); }
};
using KeyPtr = std::unique_ptr<EVP_PKEY, KeyFree>;
using MdContextPtr = std::unique_ptr<EVP_MD_CTX, MdContextFree>;

// An RSA key in PEM form; the password opens an encrypted private key.
KeyPtr readKey(const std::string& pem, const std::string& password, bool isPrivate) {
    std::unique_ptr<BIO, BioFree> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    if (!bio) return nullptr;
    void* pass = const_cast<char*>(password.c_str());
    EVP_PKEY* key = isPrivate ? PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, pass)
                              : PEM_read_bio_PUBKEY(bio.get(), nullptr, nullptr, nullptr);
    if (key == nullptr || EVP_PKEY_base_id(key) != EVP_PKEY_RSA) {
        ERR_clear_error();  // the reader's complaints stay with this thread otherwise
        EVP_PKEY_free(key);
        return nullptr;
    }
    return KeyPtr(key);
}

// CryptGenerateSignature ( data ; algorithm ; privateRSAKey ; keyPassword ): an RSA (PKCS #1
// v1.5) signature of the data's digest; "?" for a key that cannot be read.
Value fnCryptGenerateSignature(Args& a) {
    const EVP_MD* md = digestNamed(a.units(1));
    const KeyPtr key = readKey(toUtf8(a.units(2)), toUtf8(a.units(3)), true);
    if (md == nullptr || !key) return questionMark();
    const std::string data = bytesOfArgument(a, 0);
    const MdContextPtr context(EVP_MD_CTX_new());
    size_t size = 0;
    if (!context || EVP_DigestSignInit(context.get(), nullptr, md, nullptr, key.get()) != 1 ||
        EVP_DigestSign(context.get(), nullptr, &size, unsignedBytes(data), data.size()) != 1) {
        return questionMark();
    }
    std::string signature(size, '\0');
    if (EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                       unsignedBytes(data), data.size()) != 1) {
        return questionMark();
    }
    signature.resize(size);
    return containerOf(std::move(signature));
}

// CryptVerifySignature ( data ; algorithm ; publicRSAKey ; signature ): 1 when the signature
// is the key's for the data, else 0; "?" for a key that cannot be read.
Value fnCryptVerifySignature(Args& a) {
    const EVP_MD* md = digestNamed(a.units(1));
    const KeyPtr key = readKey(toUtf8(a.units(2)), {}, false);
    if (md == nullptr || !key) return questionMark();
    const std::string data = bytesOfArgument(a, 0);
    const std::string signature = bytesOfArgument(a, 3);
    const MdContextPtr context(EVP_MD_CTX_new());
    if (!context || EVP_DigestVerifyInit(context.get(), nullptr, md, nullptr, key.get()) != 1) {
        return questionMark();
    }
    return booleanValue(EVP_DigestVerify(context.get(), unsignedBytes(signature), signature.size(),
                                         unsignedBytes(data), data.size()) == 1);
}

constexpr Builtin kFunctions[] = {
    {u"cryptdigest", 2, 2, fnCryptDigest},
    {u"cryptauthcode", 3, 3, fnCryptAuthCode},
    {u"cryptgeneratesignature", 4, 4, fnCryptGenerateSignature},
    {u"cryptverifysignature", 4, 4, fnCryptVerifySignature},
};

}  // namespace

std::span<const Builtin> cryptoFunctions() { return kFunctions; }

}  // namespace sim::calc
