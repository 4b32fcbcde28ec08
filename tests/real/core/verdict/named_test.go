package verdict

import (
	"os"
	"os/exec"
	"strings"
	"testing"
)

const uuid = "0b0b0b0b-1111-2222-3333-444444444444"

// Without a text the configuration is accepted.
var nodes = []struct{ name, field, refusal string }{
	{"usable node", "port=443", ""},
	{"uuid of a panel", "uuid=" + uuid, ""},
	{"short text for a uuid", "uuid=someone", ""},
	{"no uuid", "uuid=", `common/uuid: invalid UUID: `},
	{"text of 30 characters for a uuid", "uuid=123456789012345678901234567890", ""},
	{"text of 31 characters for a uuid", "uuid=1234567890123456789012345678901", `common/uuid: invalid UUID: 1234567890123456789012345678901`},
	{"uuid without dashes", "uuid=0b0b0b0b111122223333444444444444", ""},
	{"uuid with a wrong letter", "uuid=z" + uuid[1:], `encoding/hex: invalid byte: U+007A 'z'`},
	{"port 65535", "port=65535", ""},
	{"port 0", "port=0", ""},
	{"port -1", "port=-1", `json: cannot unmarshal number -1 into Go struct field VLessOutboundVnext.vnext.port of type uint16`},
	{"port 65536", "port=65536", `json: cannot unmarshal number 65536 into Go struct field VLessOutboundVnext.vnext.port of type uint16`},
	{"no flow", "flow=", ""},
	{"flow that leaves UDP 443 alone", "flow=xtls-rprx-vision-udp443", ""},
	{"unknown flow", "flow=xtls-rprx-direct", `infra/conf: VLESS users: "flow" doesn't support "xtls-rprx-direct" in this version`},
	{"no public key", "publicKey=", `infra/conf: empty "password"`},
	{"bad public key", "publicKey=KEY", `infra/conf: invalid "password": KEY`},
	{"public key of the other alphabet", "publicKey=+++++++++++++++++++++++++++++++++++++++++++", `infra/conf: invalid "password": +++++++++++++++++++++++++++++++++++++++++++`},
	{"no short id", "shortId=", ""},
	{"short id of 16 digits", "shortId=0123456789ABCDEF", ""},
	{"short id of odd length", "shortId=abc", `infra/conf: invalid "shortId": abc`},
	{"short id with a wrong letter", "shortId=zz", `infra/conf: invalid "shortId": zz`},
	{"no fingerprint", "fingerprint=", ""},
	{"fingerprint in capitals", "fingerprint=FireFox", ""},
	{"unknown fingerprint", "fingerprint=none", `infra/conf: unknown "fingerprint": none`},
	{"no server name", "sni=", ""},
	{"quotes and backslashes", `sni=a"b\c`, ""},
	{"tab", "sni=a\tb", `invalid character '\t' in string literal`},
	{"line break", "sni=a\nb", `invalid character '\n' in string literal`},
	{"control character", "sni=a\x01b", `invalid character '\x01' in string literal`},
	{"no address", "address=", ""},
	{"host name that is not known", "address=no-such-host.example", ""},
	{"host name in Chinese", "address=节点.example", ""},
	{"IPv6 address", "address=2001:db8::1", ""},
	{"IPv6 address in brackets", "address=[2001:db8::1]", ""},
	{"address with a port", "address=node.example:443", `infra/conf: unsupported address for router: node.example:443`},
	{"zeros in front in an IPv4 address", "address=01.02.03.04", `infra/conf: unsupported address for router: 01.02.03.04`},
	{"number too large in an IPv4 address", "address=1.2.3.999", `infra/conf: unsupported address for router: 1.2.3.999`},
}

func TestNamedNodes(t *testing.T) {
	for _, node := range nodes {
		t.Run(node.name, func(t *testing.T) {
			code, line := judge(t, generate(t, node.field))
			if node.refusal == "" {
				expect(t, code, exitGood, line, accepted)
				return
			}
			expect(t, code, exitBad, line, "> "+strings.TrimSpace(node.refusal))
		})
	}
}

// A short id that is too long is an error of its own in new cores; version 25.12.8 breaks down over
// it. It ends in either case.
func TestAShortIdOf18DigitsEndsTheCore(t *testing.T) {
	if code, line := judge(t, generate(t, "shortId=0123456789abcdef01")); code != exitBad && code != 2 {
		t.Errorf("exit code %d: %s", code, line)
	}
}

// Without the geo data nothing works, whatever the node.
func TestMissingGeoDataIsRefused(t *testing.T) {
	t.Setenv("TAVRIN_GEO_DATA", t.TempDir())
	code, line := judge(t, generate(t, "port=443"))
	expect(t, code, exitBad, line, "no such file or directory")
}

// The operator's document names every text, with XXX for the value concerned.
func TestTheDocumentNamesEveryRefusal(t *testing.T) {
	document, err := os.ReadFile(os.Getenv("TAVRIN_OPERATIONS"))
	if err != nil {
		t.Fatal(err)
	}
	for _, node := range nodes {
		text := strings.TrimSpace(node.refusal)
		if _, value, _ := strings.Cut(node.field, "="); len(value) > 1 {
			text = strings.ReplaceAll(text, value, "XXX")
		}
		if !strings.Contains(string(document), text) {
			t.Errorf("the document does not have %s", text)
		}
	}
}

func generate(t *testing.T, field string) string {
	t.Helper()
	configuration, err := exec.Command(os.Getenv("TAVRIN_NODE_CONFIGURATION"), field).Output()
	if err != nil {
		t.Fatal(err)
	}
	return string(configuration)
}

func expect(t *testing.T, code, wantCode int, line, wantEnd string) {
	t.Helper()
	if code != wantCode || !strings.HasSuffix(line, wantEnd) {
		t.Errorf("exit code %d: %s", code, line)
	}
}
