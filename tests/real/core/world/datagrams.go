package world

import (
	"net"
	"sync"
)

// Datagrams answers every UDP datagram on one port with the same bytes and remembers who sent them.
type Datagrams struct {
	mutex sync.Mutex
	from  map[string]string
}

func startDatagrams(address, port string) (*Datagrams, error) {
	socket, err := net.ListenPacket("udp", net.JoinHostPort(address, port))
	if err != nil {
		return nil, err
	}
	datagrams := &Datagrams{from: map[string]string{}}
	go datagrams.serve(socket)
	return datagrams, nil
}

// SenderOf is where a datagram came from, or the empty text when it has not come.
func (d *Datagrams) SenderOf(text string) string {
	d.mutex.Lock()
	defer d.mutex.Unlock()
	return d.from[text]
}

func (d *Datagrams) serve(socket net.PacketConn) {
	buffer := make([]byte, 2048)
	for {
		length, from, err := socket.ReadFrom(buffer)
		if err != nil {
			return
		}
		d.mutex.Lock()
		d.from[string(buffer[:length])] = hostOf(from)
		d.mutex.Unlock()
		socket.WriteTo(buffer[:length], from)
	}
}
