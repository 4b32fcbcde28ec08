package traffic

import (
	"encoding/binary"
	"io"
	"net"
	"net/netip"
	"testing"

	"golang.org/x/net/dns/dnsmessage"

	"tavrin.example/real/core/world"
)

// Whatever name server an application asks, the core's own resolver answers: names of the CN list by
// way of the domestic name server, directly; all others by way of the public one, through the node.
func TestDnsIsAnsweredByTheCore(t *testing.T) {
	connect(t)
	cases := []struct {
		name, question, answer, from string
		asked                        *world.Resolver
	}{
		{"CN list", world.CnName + ".", world.CnSite, world.DomesticServer, everything.Domestic},
		{"panel", "panel.example.", world.CnSite, world.DomesticServer, everything.Domestic},
		{"GOOGLE list", world.GoogleName + ".", world.PublicSite, world.NodeAddress, everything.Public},
		{"no list", "plain-site.example.", world.PublicSite, world.NodeAddress, everything.Public},
	}
	for _, c := range cases {
		for transport, ask := range map[string]func(*testing.T, string) string{"UDP": askOverUdp, "TCP": askOverTcp} {
			t.Run(c.name+" over "+transport, func(t *testing.T) {
				if answer := ask(t, query(t, c.question, dnsmessage.TypeA)); addressIn(t, answer) != c.answer {
					t.Errorf("the answer is %s", addressIn(t, answer))
				}
				if from := c.asked.AskerOf(c.question); from != c.from {
					t.Errorf("the name server was asked from %q", from)
				}
			})
		}
	}
	if count := everything.Bystanding.Questions(); count != 0 {
		t.Errorf("the name server that the application asked saw %d names", count)
	}
}

func TestDnsGivesNoIpv6Address(t *testing.T) {
	connect(t)
	if answer := askOverUdp(t, query(t, world.GoogleName+".", dnsmessage.TypeAAAA)); addressIn(t, answer) != "" {
		t.Errorf("the answer is %s", addressIn(t, answer))
	}
}

func query(t *testing.T, name string, kind dnsmessage.Type) string {
	t.Helper()
	message := dnsmessage.Message{Header: dnsmessage.Header{ID: 77, RecursionDesired: true},
		Questions: []dnsmessage.Question{{Name: dnsmessage.MustNewName(name), Type: kind, Class: dnsmessage.ClassINET}}}
	packed, err := message.Pack()
	if err != nil {
		t.Fatal(err)
	}
	return string(packed)
}

func askOverUdp(t *testing.T, question string) string {
	t.Helper()
	association := associate(t)
	send(t, association, net.JoinHostPort(world.BystandingServer, "53"), question)
	answer, err := association.Receive(answerLimit)
	if err != nil {
		t.Fatal(err)
	}
	return answer
}

func askOverTcp(t *testing.T, question string) string {
	t.Helper()
	connection, err := world.DialSocks(net.JoinHostPort(world.BystandingServer, "53"))
	if err != nil {
		t.Fatal(err)
	}
	defer connection.Close()
	connection.Write(append(binary.BigEndian.AppendUint16(nil, uint16(len(question))), question...))
	length := make([]byte, 2)
	if _, err := io.ReadFull(connection, length); err != nil {
		t.Fatal(err)
	}
	answer := make([]byte, binary.BigEndian.Uint16(length))
	if _, err := io.ReadFull(connection, answer); err != nil {
		t.Fatal(err)
	}
	return string(answer)
}

// addressIn is the first address of an answer, or the empty text.
func addressIn(t *testing.T, answer string) string {
	t.Helper()
	var message dnsmessage.Message
	if err := message.Unpack([]byte(answer)); err != nil || message.Header.ID != 77 {
		t.Fatalf("no answer to the question: %v", err)
	}
	for _, record := range message.Answers {
		switch body := record.Body.(type) {
		case *dnsmessage.AResource:
			return netip.AddrFrom4(body.A).String()
		case *dnsmessage.AAAAResource:
			return netip.AddrFrom16(body.AAAA).String()
		}
	}
	return ""
}
