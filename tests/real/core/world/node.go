package world

import (
	"crypto/ecdh"
	"crypto/rand"
	"encoding/base64"
	"encoding/json"
	"net"
)

// NodePort is the port of the REALITY server.
const NodePort = "443"

// Node is what a client has to know of the REALITY server.
type Node struct {
	Uuid       string
	PublicKey  string
	ShortId    string
	privateKey string
}

// NewKeys gives the public and the private half of a new pair, as Xray writes them.
func NewKeys() (public, private string, err error) {
	key, err := ecdh.X25519().GenerateKey(rand.Reader)
	if err != nil {
		return "", "", err
	}
	text := base64.RawURLEncoding.EncodeToString
	return text(key.PublicKey().Bytes()), text(key.Bytes()), nil
}

func newNode() (Node, error) {
	public, private, err := NewKeys()
	return Node{Uuid: "7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11", PublicKey: public, ShortId: "0123456789abcdef",
		privateKey: private}, err
}

type object = map[string]any

// The server's own configuration. What it forwards leaves with the node's address, by which the sites
// know it.
func (n Node) serverConfiguration(coverSite string) (string, error) {
	text, err := json.Marshal(object{
		"log": object{"loglevel": "warning"},
		"dns": object{"hosts": nodeRecords},
		"inbounds": []object{{
			"listen": NodeAddress, "port": 443, "protocol": "vless",
			"settings": object{
				"clients":    []object{{"id": n.Uuid, "flow": "xtls-rprx-vision"}},
				"decryption": "none",
			},
			"streamSettings": object{"network": "tcp", "security": "reality", "realitySettings": object{
				"target": coverSite, "serverNames": []string{CoverName},
				"privateKey": n.privateKey, "shortIds": []string{n.ShortId},
			}},
		}},
		"outbounds": []object{{
			"protocol": "freedom", "sendThrough": NodeAddress, "settings": object{"domainStrategy": "UseIPv4"},
		}},
	})
	return string(text), err
}

func nodeEndpoint() string { return net.JoinHostPort(NodeAddress, NodePort) }
