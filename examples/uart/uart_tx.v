// Sends bytes as 8N1 frames: a start bit (0), eight data bits from the lowest up, a stop bit (1).
`timescale 1ns / 1ns
module uart_tx #(
    parameter DIVISOR = 14  // clock cycles in one bit
) (
    input            clk,
    input            rst,
    input      [7:0] data,
    input            valid,
    output           ready,
    output reg       line,
    output reg [3:0] bit_index  // 0 idle, 1 start bit, 2 to 9 data bits, 10 stop bit
);
  reg [7:0] shift;
  reg [7:0] count;

  assign ready = bit_index == 0;

  always @(posedge clk)
    if (rst) begin
      bit_index <= 0;
      count <= 0;
      shift <= 0;
      line <= 1;
    end else if (ready) begin
      if (valid) begin
        shift <= data;
        count <= DIVISOR - 1;
        bit_index <= 1;
        line <= 0;
      end
    end else if (count != 0) begin
      count <= count - 1;
    end else if (bit_index == 10) begin
      bit_index <= 0;
    end else begin
      count <= DIVISOR - 1;
      bit_index <= bit_index + 1;
      line <= bit_index == 9 ? 1'b1 : shift[0];
      shift <= {1'b0, shift[7:1]};
    end
endmodule
