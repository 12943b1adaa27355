// Receives 8N1 frames on its own clock: each bit is taken in its middle.
`timescale 1ns / 1ns
module uart_rx #(
    parameter DIVISOR = 10  // clock cycles in one bit
) (
    input            clk,
    input            rst,
    input            line,
    output reg [7:0] data,
    output reg       valid,  // for one cycle when data holds a new byte
    output reg       frame_error
);
  reg [1:0] sync;
  reg [3:0] bit_index;  // 0 idle, 1 start bit, 2 to 9 data bits, 10 stop bit
  reg [7:0] count;

  always @(posedge clk)
    if (rst) begin
      sync <= 2'b11;
      bit_index <= 0;
      count <= 0;
      data <= 0;
      valid <= 0;
      frame_error <= 0;
    end else begin
      sync <= {sync[0], line};
      valid <= 0;
      if (bit_index == 0) begin
        if (!sync[1]) begin
          bit_index <= 1;
          count <= DIVISOR / 2 - 1;
        end
      end else if (count != 0) begin
        count <= count - 1;
      end else begin
        count <= DIVISOR - 1;
        bit_index <= bit_index == 10 ? 4'd0 : bit_index + 4'd1;
        if (bit_index == 1 && sync[1]) bit_index <= 0;  // a spike, no start bit
        if (bit_index >= 2 && bit_index <= 9) data <= {sync[1], data[7:1]};
        if (bit_index == 10) begin
          valid <= sync[1];
          frame_error <= !sync[1];
        end
      end
    end
endmodule
