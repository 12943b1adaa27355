`timescale 1ns / 1ns

// Sends a byte and takes one, mode 0, the highest bit first; four clocks a bit.
module spi_master(input clk, input rst, input start, input [7:0] tx, output reg [7:0] rx,
                  output reg rx_valid, output busy, output reg cs_n, output reg sclk,
                  output mosi, input miso);
    localparam IDLE = 2'd0, SHIFT = 2'd1, DONE = 2'd2;
    reg [1:0] state;
    reg [1:0] phase;
    reg [2:0] bits;
    reg [7:0] shift;

    assign busy = state != IDLE;
    assign mosi = shift[7];

    always @(posedge clk) begin
        rx_valid <= 0;
        if (rst) begin
            state <= IDLE;
            cs_n <= 1;
            sclk <= 0;
            phase <= 0;
            bits <= 0;
            shift <= 0;
            rx <= 0;
        end else case (state)
            IDLE: if (start) begin
                state <= SHIFT;
                cs_n <= 0;
                shift <= tx;
                phase <= 0;
                bits <= 0;
            end
            SHIFT: begin
                phase <= phase + 1;
                if (phase == 1) begin
                    sclk <= 1;
                    rx <= {rx[6:0], miso};
                end
                if (phase == 3) begin
                    sclk <= 0;
                    shift <= {shift[6:0], 1'b0};
                    bits <= bits + 1;
                    if (bits == 7)
                        state <= DONE;
                end
            end
            default: begin
                state <= IDLE;
                cs_n <= 1;
                rx_valid <= 1;
            end
        endcase
    end
endmodule
