package verdict

import (
	"encoding/base64"
	"encoding/json"
	"net/netip"
	"regexp"
	"strings"
)

// What a configuration says of its node.
type configuration struct {
	Outbounds []struct {
		Settings struct {
			Vnext []struct {
				Address string
				Port    int64
				Users   []struct{ Id, Flow string }
			}
		}
		StreamSettings struct {
			RealitySettings struct{ Fingerprint, PublicKey, ShortId string }
		}
	}
}

var (
	uuidForm    = regexp.MustCompile(`^(.{1,30}|[0-9a-fA-F]{8}(-?[0-9a-fA-F]{4}){3}-?[0-9a-fA-F]{12})$`)
	flowForm    = regexp.MustCompile(`^(xtls-rprx-vision(-udp443)?)?$`)
	keyForm     = regexp.MustCompile(`^[A-Za-z0-9_-]{43}$`)
	shortIdForm = regexp.MustCompile(`^([0-9a-fA-F]{2}){0,8}$`)
	printForm   = regexp.MustCompile(`^(?i:chrome|firefox|safari|ios|android|edge|360|qq|random|randomized)?$`)
	literalForm = regexp.MustCompile(`:|^[0-9]*(\.[0-9]*){3}$`)
)

// damageOf names what is wrong with a generated file by the rules of the operator's document, or gives
// the empty text for a configuration that is meant to work.
func damageOf(text []byte) string {
	var parsed configuration
	if json.Unmarshal(text, &parsed) != nil {
		return "a control character"
	}
	server := parsed.Outbounds[0].Settings.Vnext[0]
	reality := parsed.Outbounds[0].StreamSettings.RealitySettings
	_, notBase64 := base64.RawURLEncoding.DecodeString(reality.PublicKey)
	_, notAddress := netip.ParseAddr(strings.Trim(server.Address, "[]"))
	switch {
	case server.Port < 0 || server.Port > 65535:
		return "the port"
	case !uuidForm.MatchString(server.Users[0].Id):
		return "the uuid"
	case !flowForm.MatchString(server.Users[0].Flow):
		return "the flow"
	case !keyForm.MatchString(reality.PublicKey) || notBase64 != nil:
		return "the public key"
	case !shortIdForm.MatchString(reality.ShortId):
		return "the short id"
	case !printForm.MatchString(reality.Fingerprint):
		return "the fingerprint"
	case literalForm.MatchString(server.Address) && notAddress != nil:
		return "the address"
	}
	return ""
}
