`timescale 1ns / 1ns

// A sensor that answers each byte with the one before it, plus one. A byte of 0x50 to 0x57 takes it
// longer: it holds its answer back, and sends the old one again.
module spi_sensor(input cs_n, input sclk, input mosi, output miso);
    reg [7:0] in = 0;
    reg [7:0] answer = 8'h11;
    reg [7:0] out = 8'h11;

    assign miso = out[7];

    always @(posedge sclk) in <= {in[6:0], mosi};
    always @(negedge sclk) if (!cs_n) out <= {out[6:0], 1'b0};
    always @(posedge cs_n) if (in[7:3] != 5'b01010) answer <= in + 1;
    always @(negedge cs_n) out <= answer;
endmodule
