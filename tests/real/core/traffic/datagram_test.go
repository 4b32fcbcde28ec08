package traffic

import (
	"net"
	"testing"
	"time"

	"tavrin.example/real/core/world"
)

const answerLimit = 20 * time.Second

func associate(t *testing.T) *world.SocksDatagrams {
	t.Helper()
	association, err := world.Associate()
	if err != nil {
		t.Fatal(err)
	}
	t.Cleanup(association.Close)
	return association
}

// The datagram to port 443 is sent first. When the answer to the later one is there, the first one
// would have come too. Each has an association of its own, since the core keeps all datagrams of one
// association on the road of its first.
func TestUdpToPort443IsBlockedAndOtherUdpIsNot(t *testing.T) {
	connect(t)
	send(t, associate(t), net.JoinHostPort(world.PublicSite, "443"), "to 443")
	association := associate(t)
	send(t, association, net.JoinHostPort(world.PublicSite, world.EchoPort), "to the other port")
	if echo, err := association.Receive(answerLimit); err != nil || echo != "to the other port" {
		t.Fatalf("%q, %v", echo, err)
	}
	if from := everything.Echo.SenderOf("to the other port"); from != world.NodeAddress {
		t.Errorf("the datagram came from %q and not from the node", from)
	}
	if from := everything.Quic.SenderOf("to 443"); from != "" {
		t.Errorf("the datagram to port 443 came from %q", from)
	}
}

// The same datagram comes to port 443 when nothing keeps it off.
func TestPort443TakesDatagramsWithoutTheCore(t *testing.T) {
	socket, err := net.Dial("udp", net.JoinHostPort(world.PublicSite, "443"))
	if err != nil {
		t.Fatal(err)
	}
	defer socket.Close()
	socket.Write([]byte("straight"))
	socket.SetReadDeadline(time.Now().Add(answerLimit))
	if _, err := socket.Read(make([]byte, 100)); err != nil || everything.Quic.SenderOf("straight") == "" {
		t.Error("the datagram did not come:", err)
	}
}

func send(t *testing.T, association *world.SocksDatagrams, to, text string) {
	t.Helper()
	if err := association.Send(to, text); err != nil {
		t.Fatal(err)
	}
}
